// main_window.cpp - the entry point and the main window with its bands, its tree and its commands.

#include "dialogs.h"
#include "engine/backup_run.h"
#include "engine/questions.h"
#include "engine/registry_calls.h"
#include "engine/restore_run.h"
#include "options_store.h"
#include "set/set_state.h"
#include "status_report.h"
#include "tree/marking.h"
#include "tree/tree_events.h"

#include "ce/command_bands.h"
#include "ce/outcome.h"
#include "ce/resource.h"
#include "ce/winmain.h"

HINSTANCE gInstance;
HWND gMainWindow;

namespace {

const WCHAR WindowClass[] = u"Quillbox";
const WCHAR WindowTitle[] = u"KORV Quillbox";

constexpr WORD ProgramIcon = 109;
constexpr WORD MainMenu = 104;
constexpr WORD ToolbarBitmap = 106;
constexpr WORD BandBitmap = 107;
constexpr WORD AboutDialog = 103;
constexpr WORD FilterDialog = 110;
constexpr WORD OptionsDialog = 111;

constexpr UINT CommandBandsId = 1;
constexpr INT_PTR TreeViewId = 102;
constexpr DWORD TreeViewStyle = WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT;

constexpr UINT MenuBandWidth = 145;
constexpr UINT ToolBandWidth = 110;
constexpr int ToolbarButtons = 5;
constexpr int FirstToolbarCommand = 500;
constexpr int ToolbarImages = 7;  // passed to CommandBar_AddBitmap, although the bitmap has only five images
HWND gToolBand;

bool gJobRuns;  // a backup or restore is in progress; the lists can contain its items instead of the user's marks

constexpr UINT_PTR RootImagesTimer = 1;
constexpr UINT RootImagesMilliseconds = 500;

enum Command : WORD {
    CommandMarkFolder = 500,
    CommandUnmarkFolder = 501,
    CommandToolFullBackup = 502,
    CommandToolFilter = 503,
    CommandToolOptions = 504,
    CommandExit = 40002,
    CommandFullBackup = 40003,
    CommandBackupSelected = 40005,
    CommandFullRestore = 40006,
    CommandPartialRestore = 40007,
    CommandAbout = 40009,
    CommandFilter = 40010,
    CommandOptions = 40011,
};

void AddBand(UINT mask, UINT style, UINT width)
{
    REBARBANDINFOW band = {};
    band.cbSize = sizeof band;
    band.fMask = mask;
    band.fStyle = style;
    band.cx = width;
    CommandBands_AddBands(gCommandBands, gInstance, 1, &band);
}

void AddToolbarButtons()
{
    TBBUTTON buttons[ToolbarButtons] = {};
    for (int i = 0; i < ToolbarButtons; i++) {
        buttons[i].iBitmap = i;
        buttons[i].idCommand = FirstToolbarCommand + i;
        buttons[i].fsState = TBSTATE_ENABLED;
    }
    CommandBar_AddBitmap(gToolBand, gInstance, ToolbarBitmap, ToolbarImages, 0, 0);
    SendMessageW(gToolBand, TB_ADDBUTTONSW, ToolbarButtons, reinterpret_cast<LPARAM>(buttons));
}

void CreateBands(HWND window)
{
    HIMAGELIST images =
        ImageList_LoadImage(gInstance, MAKEINTRESOURCEW(BandBitmap), 16, 0, CLR_DEFAULT, IMAGE_BITMAP, 0);
    gCommandBands = CommandBands_Create(gInstance, window, CommandBandsId, RBS_BANDBORDERS, images);
    AddBand(RBBIM_STYLE | RBBIM_SIZE, RBBS_CHILDEDGE | RBBS_NOGRIPPER, MenuBandWidth);
    AddBand(RBBIM_STYLE | RBBIM_IMAGE | RBBIM_SIZE, RBBS_CHILDEDGE, ToolBandWidth);
    CommandBar_InsertMenubar(CommandBands_GetCommandBar(gCommandBands, 0), gInstance, MainMenu, 0);
    gToolBand = CommandBands_GetCommandBar(gCommandBands, 1);
    AddToolbarButtons();
}

void CreateTree(HWND window)
{
    RECT client;
    GetClientRect(window, &client);
    const int barHeight = CommandBar_Height(gToolBand);
    gTreeView =
        CreateWindowExW(0, u"SysTreeView32", u"Tree View Control", TreeViewStyle, 0, barHeight + 1, client.right,
                        client.bottom - barHeight - 1, window, reinterpret_cast<HMENU>(TreeViewId), gInstance, nullptr);
    if (CreateTreeImages() && InsertRootItems(gTreeView)) {
        SetTimer(window, RootImagesTimer, RootImagesMilliseconds, nullptr);
        return;
    }
    // The pictures or the top items couldn't be made, so the window gets no tree.
    DestroyWindow(gTreeView);
    gTreeView = nullptr;
}

void CreateContent(HWND window)
{
    HANDLE icon = LoadImageW(gInstance, MAKEINTRESOURCEW(ProgramIcon), IMAGE_ICON, 16, 16, 0);
    SendMessageW(window, WM_SETICON, ICON_SMALL, reinterpret_cast<LPARAM>(icon));
    LoadOptions();

    CreateBands(window);
    CommandBands_AddAdornments(gCommandBands, gInstance, CMDBAR_HELP, nullptr);
    CommandBands_Show(gCommandBands, TRUE);
    CreateTree(window);
    FindNewestSet();
    ReportStatusToHost();
}

void DestroyContent()
{
    SaveOptions();
    DeleteLists();
    PostQuitMessage(0);
}

void ReportMarks()
{
    if (!gJobRuns)
        ReportStatusToHost();
}

// Runs one backup or restore. It can change files, so the tree lists the files again afterwards.
void RunJob(HWND window, WORD command)
{
    gJobRuns = true;
    BeginJob();
    switch (command) {
    case CommandBackupSelected:
        RunBackup(BackupSelectedItems);
        break;
    case CommandFullRestore:
        RunRestore(RestoreFull);
        break;
    case CommandPartialRestore:
        RunRestore(RestorePartial);
        break;
    default:
        RunFullBackup();
        break;
    }
    ResetFilesRoot();
    gJobRuns = false;
    ReportJobEnd();
    EndJob(window);
}

void RunCommand(HWND window, WORD command)
{
    switch (command) {
    case CommandMarkFolder:
        MarkFolder(1);
        break;
    case CommandUnmarkFolder:
        MarkFolder(0);
        break;
    case CommandToolFullBackup:
    case CommandFullBackup:
    case CommandBackupSelected:
    case CommandFullRestore:
    case CommandPartialRestore:
        RunJob(window, command);
        break;
    case CommandToolFilter:
    case CommandFilter:
        RunDialog(FilterDialog, window, FilterDialogProc, 0);
        ResetFilesRoot();
        break;
    case CommandToolOptions:
    case CommandOptions:
        RunDialog(OptionsDialog, window, OptionsDialogProc, 0);
        break;
    case CommandAbout:
        RunDialog(AboutDialog, window, AboutDialogProc, 0);
        break;
    case CommandExit:
        DestroyWindow(window);
        break;
    default:
        break;
    }
}

LRESULT MainWindowProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam)
{
    switch (message) {
    case WM_CREATE:
        CreateContent(window);
        return 0;
    case WM_DESTROY:
        DestroyContent();
        return 0;
    case WM_CLOSE:
        DestroyWindow(window);
        return 0;
    case WM_NOTIFY:
        TreeNotify(window, wParam, lParam);
        ReportMarks();
        return 0;
    case WM_TIMER:
        UpdateRootImages();
        ReportMarks();
        return 0;
    case WM_COMMAND:
        RunCommand(window, LOWORD(wParam));
        ReportMarks();
        return 0;
    default:
        return DefWindowProcW(window, message, wParam, lParam);
    }
}

void RegisterMainClass(HINSTANCE instance)
{
    WNDCLASSW windowClass = {};
    windowClass.lpfnWndProc = MainWindowProc;
    windowClass.hInstance = instance;
    windowClass.hIcon = LoadIconW(instance, MAKEINTRESOURCEW(ProgramIcon));
    windowClass.hbrBackground = GetStockObject(WHITE_BRUSH);
    windowClass.lpszClassName = WindowClass;
    RegisterClassW(&windowClass);
}

}  // namespace

int WinMain(HINSTANCE instance, HINSTANCE, WCHAR*, int)
{
    if (HWND running = FindWindowW(WindowClass, WindowTitle)) {
        SetForegroundWindow(running);
        return 0;
    }
    RenewLists();
    SetDefaultOptions();
    SetRunWindows();
    RegisterMainClass(instance);
    LookUpRegistryFileCalls();
    INITCOMMONCONTROLSEX classes = {sizeof classes,
                                    ICC_TREEVIEW_CLASSES | ICC_BAR_CLASSES | ICC_DATE_CLASSES | ICC_COOL_CLASSES};
    InitCommonControlsEx(&classes);
    gInstance = instance;
    gMainWindow = CreateWindowExW(0, WindowClass, WindowTitle, WS_VISIBLE, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT,
                                  CW_USEDEFAULT, nullptr, nullptr, instance, nullptr);
    ShowWindow(gMainWindow, SW_SHOW);
    UpdateWindow(gMainWindow);

    MSG message = {};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
    return static_cast<int>(message.wParam);
}
