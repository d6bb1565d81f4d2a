// tree_fixture.h - a real device in a temporary folder, and the tree of the window core over it, without a display.
#pragma once

#include "device/device.h"
#include "tree_control/tree_display.h"

#include "ce/tree_view.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

class TreeTest : public testing::Test {
protected:
    TreeTest();
    ~TreeTest() override;

    // A file of the object store, by its host path below it.
    void write(const std::string& name) const;
    void makeFolder(const std::string& name) const;
    // The bits of the platform's attributes beside those that the host knows.
    void setAttributes(const std::string& name, DWORD attributes) const;
    // When it was written, in seconds since 1970.
    void setTime(const std::string& name, std::int64_t seconds) const;

    // An item by the texts from a top item on: "Files\\A\\b.txt". Null if it isn't listed.
    static HTREEITEM item(const std::string& path);
    // As the user does it: a click on the label, on the button, a key.
    static void click(const std::string& path);
    static void clickButton(const std::string& path);
    static void clickOn(const std::string& path, platform::window::TreePart part);
    static void press(WORD key);
    // Expands each folder on the way, if it isn't.
    static void open(const std::string& path);

    // -1 for an item that isn't listed.
    static int image(const std::string& path);
    static int count(const std::string& path);
    // As if as many marks had come and gone, with the image that belongs to them.
    static void setCount(const std::string& path, WORD count);
    static bool hasButton(const std::string& path);
    static std::string selected();
    // The children's texts with their images, in their order: "B:9 a.txt:6".
    static std::string listed(const std::string& path);
    // What is marked, sorted: "\\A\\b.txt \\c".
    static std::string markedFiles();

    static void useFilter(const std::u16string& extensions);  // "txt,doc"
    static void useDate(std::int64_t seconds);                // nothing older, in seconds since 1970

    std::filesystem::path folder_;
    HWND window_ = nullptr;

private:
    std::unique_ptr<platform::device::Device> device_;
};
