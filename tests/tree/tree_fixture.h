// tree_fixture.h - a real device in a temporary folder, and the tree of the window core over it, without a display.
#pragma once

#include "device/device.h"
#include "host_folder.h"
#include "tree_control/tree_display.h"

#include "ce/tree_view.h"

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <vector>

class TreeTest : public HostFolder {
protected:
    TreeTest();
    ~TreeTest() override;

    // Files of the object store, by their host paths below it. A path that ends with a slash makes a folder.
    void write(std::initializer_list<const char*> names) const;
    // The platform's attributes of a file, as hexadecimal text.
    void setAttributes(const std::string& name, const std::string& attributes) const;
    // When it was written, in seconds since 1970.
    void setTime(const std::string& name, std::int64_t seconds) const;

    // An item by the texts from a top item on: "Files\\A\\b.txt". Null if it isn't listed.
    static HTREEITEM item(const std::string& path);
    // What the user does: a click on the label or on another part.
    static void click(const std::string& path, platform::window::TreePart part = platform::window::TreePart::Label);
    static void clickButton(const std::string& path) { click(path, platform::window::TreePart::Button); }
    // Expands each folder on the way that is collapsed.
    static void open(const std::string& path);
    // Collapses "Files" and lists it again down to that folder.
    static void listAgain(const std::string& path = "Files")
    {
        clickButton("Files");
        open(path);
    }

    // Sets the mark count, and the image that goes with it.
    static void setCount(const std::string& path, WORD count);
    // The item and all that is listed below it, siblings sorted by name, with images and mark counts: "A:9:0
    // b.txt:7:1".
    static std::string marks(const std::string& path) { return marksFrom(item(path)); }
    // The names of its children in the tree's order.
    static std::vector<std::string> listed(const std::string& path);
    static bool hasButton(const std::string& path);
    static std::string selected();
    // The entries of the file list, sorted: "\\A\\b.txt \\c".
    static std::string markedFiles();

    static void useFilter(const std::u16string& extensions);  // "txt,doc"
    static void useDate(std::int64_t seconds);                // hides what is older, in seconds since 1970

    HWND window_ = nullptr;

private:
    static std::string marksFrom(HTREEITEM item);

    std::unique_ptr<platform::device::Device> device_;
};
