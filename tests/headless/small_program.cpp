#include "small_program.h"

#include "text/host_name.h"

#include "ce/command_bands.h"
#include "ce/controls.h"
#include "ce/dialog.h"
#include "ce/resource.h"
#include "ce/window.h"

#include <atomic>
#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace small {

namespace {

constexpr int Message = 1002;
constexpr int Counter = 1029;
constexpr UINT EndProgress = WM_APP;
constexpr UINT LetGo = WM_APP + 1;

HWND mainWindow = nullptr;
std::atomic<HWND> stubborn = nullptr;
std::atomic<bool> running = false;

const void* dialogTemplate(UINT_PTR id)
{
    return LoadResource(nullptr, FindResourceW(nullptr, MAKEINTRESOURCEW(id), RT_DIALOG));
}

// What the program reads from one of the dialogs of the resources, by the ids of its controls.
struct DialogKind {
    WORD id;
    int edit = 0;
    std::vector<int> boxes = {};
    int list = 0;
    std::vector<const WCHAR*> rows = {};
    bool needsARow = false;
};

const DialogKind RunDialog = {.id = 108, .edit = 1004, .boxes = {1005, 1006, 1007}};
const DialogKind ItemsDialog = {.id = 109, .list = 1006, .rows = {u"File:\\a", u"Database:b", u"Registry"}};
const DialogKind ChooseDialog = {.id = 107, .list = 1003, .rows = {u"\\Card", u"Main device"}, .needsARow = true};
const DialogKind PolicyDialog = {.id = 111, .boxes = {1023, 1024, 1025}};

// Notes what the dialog contains. Without a selected row, a dialog that needs one shows a message and returns false.
bool accept(HWND dialog, const DialogKind& kind)
{
    WCHAR text[260] = {};
    std::string line;
    if (kind.edit != 0 && GetDlgItemTextW(dialog, kind.edit, text, 260) != 0)
        line = platform::text::toUtf8(text) + " ";
    for (const int id : kind.boxes)
        line += SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == 1 ? '1' : '0';
    for (WPARAM row = 0; row < kind.rows.size(); ++row) {
        if (SendDlgItemMessageW(dialog, kind.list, LB_GETSEL, row, 0) > 0) {
            SendDlgItemMessageW(dialog, kind.list, LB_GETTEXT, row, reinterpret_cast<LPARAM>(text));
            line += platform::text::toUtf8(text);
        }
    }
    if (kind.needsARow && line.empty()) {
        MessageBoxW(dialog, u"You must select an item", nullptr, MB_OK);
        return false;
    }
    diary().note(line);
    return true;
}

INT_PTR dialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM lParam)
{
    static const DialogKind* kind;  // one is open at a time
    if (message == WM_INITDIALOG) {
        kind = reinterpret_cast<const DialogKind*>(lParam);
        for (const WCHAR* row : kind->rows)
            SendDlgItemMessageW(dialog, kind->list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
    } else if (message == WM_COMMAND && LOWORD(wParam) == IDOK && accept(dialog, *kind)) {
        EndDialog(dialog, 1);
    } else if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
        diary().note("cancelled");
        EndDialog(dialog, 0);
    }
    return 0;
}

INT_PTR showDialog(const DialogKind& kind)
{
    return DialogBoxIndirectParamW(nullptr, dialogTemplate(kind.id), mainWindow, dialogProcedure,
                                   reinterpret_cast<LPARAM>(&kind));
}

INT_PTR progressProcedure(HWND dialog, UINT message, WPARAM, LPARAM)
{
    if (message == WM_INITDIALOG) {
        SetWindowTextW(dialog, u"Backuping Files");
        SetDlgItemTextW(dialog, Message, u"Backuping Files");
    }
    if (message == EndProgress) {
        DestroyWindow(dialog);
        PostQuitMessage(0);
    }
    return 0;
}

// A progress window on a thread of its own.
class Progress {
public:
    Progress()
    {
        std::promise<HWND> made;
        thread_ = std::thread([&made] {
            made.set_value(CreateDialogIndirectParamW(nullptr, dialogTemplate(106), mainWindow, progressProcedure, 0));
            MSG message;
            while (GetMessageW(&message, nullptr, 0, 0) > 0)
                DispatchMessageW(&message);
        });
        window_ = made.get_future().get();
    }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;
    ~Progress()
    {
        SendMessageW(window_, EndProgress, 0, 0);
        thread_.join();
    }

    void show(int id, const WCHAR* text) const { SetDlgItemTextW(window_, id, text); }

private:
    std::thread thread_;
    HWND window_ = nullptr;
};

void run()
{
    if (showDialog(RunDialog) != 1)
        return;
    const Progress progress;
    progress.show(Message, u"File: \\a \"b\".txt");
    progress.show(Counter, u"Backuped: 1");
    const int answer = MessageBoxW(mainWindow, u"Override\r\n\\a file", u"Info?", MB_YESNO | MB_DEFBUTTON2);
    diary().note("override " + std::to_string(answer));
    progress.show(Counter, u"Backuped: 2");
}

// Each question names a file, and the progress window counts it.
void askMuch()
{
    int refused = 0;
    {
        const Progress progress;
        for (int file = 0; file < 300; ++file) {
            const std::u16string name = platform::text::fromUtf8("file " + std::to_string(file));
            const int answer = MessageBoxW(mainWindow, name.c_str(), u"Replace?", MB_YESNO | MB_DEFBUTTON2);
            refused += answer == IDNO ? 1 : 0;
            progress.show(Counter, name.c_str());
            MessageBoxW(mainWindow, u"A file wasn't replaced", u"Warning", MB_OK);
        }
    }
    diary().note("refused " + std::to_string(refused));
}

void askQuestions()
{
    const int first = MessageBoxW(mainWindow, u"First question?", u"Ask", MB_YESNOCANCEL);
    const int second = MessageBoxW(mainWindow, u"Second, no question", u"Tell", MB_OK);
    const int third = MessageBoxW(mainWindow, u"Third question?", u"Ask", MB_ABORTRETRYIGNORE);
    diary().note(std::to_string(first) + " " + std::to_string(second) + " " + std::to_string(third));
}

void onCommand(HWND window, WORD id)
{
    switch (id) {
    case Exit:
        DestroyWindow(window);
        break;
    case Run:
        run();
        break;
    case Items:
        showDialog(ItemsDialog);
        break;
    case Questions:
        askQuestions();
        break;
    case Choose:
        showDialog(ChooseDialog);
        break;
    case Work:
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        diary().note("worked");
        break;
    case Policy:
        showDialog(PolicyDialog);
        break;
    case StayOpen:
        stubborn = window;
        break;
    case AskMuch:
        askMuch();
        break;
    default:
        break;
    }
}

void createBands(HWND window)
{
    const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, nullptr);
    REBARBANDINFOW band = {};
    band.cbSize = sizeof band;
    CommandBands_AddBands(bands, nullptr, 1, &band);
    const HWND bar = CommandBands_GetCommandBar(bands, 0);
    CommandBar_InsertMenubar(bar, nullptr, 104, 0);
    const TBBUTTON askMuchButton = {0, AskMuch, TBSTATE_ENABLED, 0, 0, 0};
    SendMessageW(bar, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&askMuchButton));
    CommandBands_Show(bands, TRUE);
}

LRESULT mainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        createBands(window);
        return 0;
    case WM_COMMAND:
        onCommand(window, LOWORD(wParam));
        return 0;
    case WM_CLOSE:
        if (!stubborn)
            return DefWindowProcW(window, message, wParam, lParam);
        MessageBoxW(window, u"Stay?", u"Small program", MB_YESNOCANCEL);
        return 0;
    case LetGo:
        DestroyWindow(window);
        return 0;
    case WM_DESTROY:
        diary().note("closed");
        PostQuitMessage(0);
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

}  // namespace

Diary& diary()
{
    static Diary theDiary;
    return theDiary;
}

int program()
{
    running = true;
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = mainProcedure;
    windowClass.lpszClassName = u"Small";
    RegisterClassW(&windowClass);
    mainWindow = CreateWindowExW(0, u"Small", u"Small program", WS_VISIBLE, CW_USEDEFAULT, 0, CW_USEDEFAULT, 0, nullptr,
                                 nullptr, nullptr, nullptr);
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    running = false;
    running.notify_all();
    return 0;
}

void letGo()
{
    PostMessageW(stubborn.exchange(nullptr), LetGo, 0, 0);
    running.wait(true);
}

}  // namespace small
