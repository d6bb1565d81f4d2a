// small_program.cpp - a program of a few commands for scripts to drive.

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

namespace small {

namespace {

constexpr int MessageText = 1002;
constexpr int Counter = 1029;
constexpr int List107 = 1003;
constexpr int List109 = 1006;
constexpr UINT EndProgress = WM_APP;
constexpr UINT LetGo = WM_APP + 1;

HWND mainWindow = nullptr;
std::atomic<HWND> stubborn = nullptr;
std::atomic<bool> running = false;

INT_PTR showDialog(UINT_PTR id, HWND owner, DLGPROC procedure)
{
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(id), RT_DIALOG);
    return DialogBoxIndirectParamW(nullptr, LoadResource(nullptr, found), owner, procedure, 0);
}

std::string textOf(HWND dialog, int id)
{
    WCHAR text[260];
    GetDlgItemTextW(dialog, id, text, 260);
    return platform::text::toUtf8(text);
}

std::string rowOf(HWND dialog, int list, LRESULT row)
{
    WCHAR text[260] = {};
    SendDlgItemMessageW(dialog, list, LB_GETTEXT, static_cast<WPARAM>(row), reinterpret_cast<LPARAM>(text));
    return platform::text::toUtf8(text);
}

std::string checksOf(HWND dialog, int first, int last)
{
    std::string checks;
    for (int id = first; id <= last; ++id)
        checks += SendDlgItemMessageW(dialog, id, BM_GETCHECK, 0, 0) == 1 ? '1' : '0';
    return checks;
}

void addRows(HWND dialog, int list, std::initializer_list<const char16_t*> rows)
{
    for (const char16_t* row : rows)
        SendDlgItemMessageW(dialog, list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(row));
}

// Ends the dialog on OK and Cancel; on OK `atOk` notes what it holds, and may refuse.
template <class AtOk>
INT_PTR endOnButtons(HWND dialog, UINT message, WPARAM wParam, AtOk atOk)
{
    if (message == WM_COMMAND && LOWORD(wParam) == IDOK && atOk())
        EndDialog(dialog, 1);
    if (message == WM_COMMAND && LOWORD(wParam) == IDCANCEL) {
        diary().note("cancelled");
        EndDialog(dialog, 0);
    }
    return 0;
}

INT_PTR runDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    return endOnButtons(dialog, message, wParam, [&] {
        diary().note(textOf(dialog, 1004) + " " + checksOf(dialog, 1005, 1007));
        return true;
    });
}

INT_PTR itemsDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG) {
        addRows(dialog, List109, {u"File:\\a", u"Database:b", u"Registry"});
        SetDlgItemTextW(dialog, 1004, u"two\r\nlines");
    }
    return endOnButtons(dialog, message, wParam, [&] {
        for (LRESULT row = 0; row < 3; ++row) {
            if (SendDlgItemMessageW(dialog, List109, LB_GETSEL, static_cast<WPARAM>(row), 0) > 0)
                diary().note(rowOf(dialog, List109, row));
        }
        return true;
    });
}

INT_PTR chooseDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG)
        addRows(dialog, List107, {u"\\Card", u"Main device"});
    return endOnButtons(dialog, message, wParam, [&] {
        const LRESULT row = SendDlgItemMessageW(dialog, List107, LB_GETCURSEL, 0, 0);
        if (row == LB_ERR) {
            MessageBoxW(dialog, u"You must select an item", nullptr, MB_OK);
            return false;
        }
        diary().note(rowOf(dialog, List107, row));
        return true;
    });
}

INT_PTR policyDialog(HWND dialog, UINT message, WPARAM wParam, LPARAM)
{
    if (message == WM_INITDIALOG) {
        SendDlgItemMessageW(dialog, 1025, BM_SETCHECK, 1, 0);
        SetDlgItemTextW(dialog, 1027, u"4");
    }
    return endOnButtons(dialog, message, wParam, [&] {
        diary().note(checksOf(dialog, 1023, 1025));
        return true;
    });
}

INT_PTR progressDialog(HWND dialog, UINT message, WPARAM, LPARAM)
{
    if (message == WM_INITDIALOG) {
        SetWindowTextW(dialog, u"Backuping Files");
        SetDlgItemTextW(dialog, MessageText, u"Backuping Files");
    }
    if (message == EndProgress) {
        DestroyWindow(dialog);
        PostQuitMessage(0);
    }
    return 0;
}

void runProgressWindow(std::promise<HWND>& made)
{
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(106), RT_DIALOG);
    made.set_value(CreateDialogIndirectParamW(nullptr, LoadResource(nullptr, found), mainWindow, progressDialog, 0));
    MSG message;
    while (GetMessageW(&message, nullptr, 0, 0) > 0)
        DispatchMessageW(&message);
}

void run()
{
    if (showDialog(108, mainWindow, runDialog) != 1)
        return;
    std::promise<HWND> made;
    std::thread thread([&] { runProgressWindow(made); });
    const HWND progress = made.get_future().get();
    SetDlgItemTextW(progress, MessageText, u"File: \\a \"b\".txt");
    SetDlgItemTextW(progress, Counter, u"Backuped: 1");
    const int answer = MessageBoxW(mainWindow, u"Override\r\n\\a file", u"Info?", MB_YESNO | MB_DEFBUTTON2);
    diary().note("override " + std::to_string(answer));
    SetDlgItemTextW(progress, Counter, u"Backuped: 2");
    SendMessageW(progress, EndProgress, 0, 0);
    thread.join();
}

// Its progress window counts what it has done; one that it asks of says which.
void askMuch()
{
    std::promise<HWND> made;
    std::thread thread([&] { runProgressWindow(made); });
    const HWND progress = made.get_future().get();
    int refused = 0;
    for (int file = 0; file < 300; ++file) {
        const std::u16string name = platform::text::fromUtf8("file " + std::to_string(file));
        refused += MessageBoxW(mainWindow, name.c_str(), u"Replace?", MB_YESNO | MB_DEFBUTTON2) == IDNO ? 1 : 0;
        SetDlgItemTextW(progress, Counter, name.c_str());
        MessageBoxW(mainWindow, u"A file wasn't replaced", u"Warning", MB_OK);
    }
    SendMessageW(progress, EndProgress, 0, 0);
    thread.join();
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
        showDialog(109, window, itemsDialog);
        break;
    case Questions:
        askQuestions();
        break;
    case Choose:
        showDialog(107, window, chooseDialog);
        break;
    case Work:
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        diary().note("worked");
        break;
    case Policy:
        showDialog(111, window, policyDialog);
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

LRESULT mainProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE: {
        const HWND bands = CommandBands_Create(nullptr, window, 1, RBS_BANDBORDERS, nullptr);
        REBARBANDINFOW band = {};
        band.cbSize = sizeof band;
        band.fMask = RBBIM_STYLE | RBBIM_SIZE;
        band.cx = 145;
        CommandBands_AddBands(bands, nullptr, 1, &band);
        CommandBar_InsertMenubar(CommandBands_GetCommandBar(bands, 0), nullptr, 104, 0);
        TBBUTTON askMuchButton = {};
        askMuchButton.idCommand = AskMuch;
        askMuchButton.fsState = TBSTATE_ENABLED;
        SendMessageW(CommandBands_GetCommandBar(bands, 0), TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&askMuchButton));
        CommandBands_Show(bands, TRUE);
        return 0;
    }
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
