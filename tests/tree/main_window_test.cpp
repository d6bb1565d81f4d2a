// The program's entry point on a thread of its own, without a script and without a display.
#include "controls/bands_display.h"
#include "tree/tree_model.h"
#include "tree_fixture.h"
#include "window/display.h"

#include "resource/resource_file.h"
#include "resources/embedded_resources.h"

#include "ce/command_bands.h"
#include "ce/winmain.h"

#include <future>
#include <thread>
#include <utility>

namespace {

using namespace platform::window;

class MainWindowTest : public TreeTest {
protected:
    MainWindowTest()
    {
        EXPECT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
        // The program makes its own lists.
        delete std::exchange(gFileList, nullptr);
        delete std::exchange(gDatabaseList, nullptr);
        program = std::async(std::launch::async, [] { return WinMain(nullptr, nullptr, nullptr, 0); });
        while (!window || !takesInput(window)) {
            window = FindWindowW(u"Quillbox", u"KORV Quillbox");
            std::this_thread::yield();
        }
    }
    ~MainWindowTest() override
    {
        EXPECT_TRUE(postClose(window));
        EXPECT_EQ(program.get(), 0);
    }

    HWND window = nullptr;
    std::future<int> program;
};

TEST_F(MainWindowTest, TreeFillsTheWindowBelowItsBands)
{
    NMHDR header = {};
    header.code = RBN_HEIGHTCHANGE;
    SendMessageW(window, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&header));
    const auto height = static_cast<int>(SendMessageW(gCommandBands, RB_GETBARHEIGHT, 0, 0));
    EXPECT_GT(height, 0);
    const std::vector<BandState> bands = bandsOf(gCommandBands);
    ASSERT_EQ(bands.size(), 2U);
    EXPECT_EQ(bands[1].rectangle.left, 145);  // the first band has the width that the program gave it
    RECT client = {};
    ASSERT_TRUE(GetClientRect(window, &client));
    WindowState tree;
    ASSERT_TRUE(readWindow(gTreeView, tree));
    EXPECT_EQ(tree.rectangle.left, 1);
    EXPECT_EQ(tree.rectangle.top, height + 1);
    EXPECT_EQ(tree.rectangle.bottom, client.bottom);
}

TEST_F(MainWindowTest, BandsRefuseWhatTheyCannotShow)
{
    REBARBANDINFOW band = {};
    EXPECT_FALSE(CommandBands_AddBands(gCommandBands, nullptr, 1, &band));  // no size
    EXPECT_EQ(CommandBands_GetCommandBar(gCommandBands, 2), nullptr);
    const HWND toolbar = CommandBands_GetCommandBar(gCommandBands, 1);
    EXPECT_FALSE(CommandBar_InsertMenubar(toolbar, nullptr, 999, 0));
    EXPECT_EQ(CommandBar_AddBitmap(toolbar, nullptr, 999, 7, 0, 0), -1);
    const TBBUTTON disabled = {1, 599, 0, 0, 0, 0};
    EXPECT_EQ(SendMessageW(toolbar, TB_ADDBUTTONSW, 1, reinterpret_cast<LPARAM>(&disabled)), TRUE);
    EXPECT_EQ(SendMessageW(toolbar, TB_ADDBUTTONSW, 5000, reinterpret_cast<LPARAM>(&disabled)), FALSE);
    EXPECT_FALSE(postCommand(window, 599));
}

TEST_F(MainWindowTest, SecondCallOfWinMainReturnsAndKeepsTheWindowTheTreeAndTheFileList)
{
    const ItemList* const files = gFileList;
    const HWND tree = gTreeView;
    EXPECT_EQ(WinMain(nullptr, nullptr, nullptr, 0), 0);
    EXPECT_EQ(gFileList, files);
    EXPECT_EQ(gTreeView, tree);
    EXPECT_EQ(FindWindowW(u"QUILLBOX", nullptr), window);
}

}  // namespace
