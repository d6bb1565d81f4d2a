// The embedded resources against what the program and its users rely on: texts, menu, dialogs, pictures. Read
// with a small reader of its own, so that the compiler's output is tested, not the platform's reading of it.

#include "resource/resource_file.h"
#include "resources/accessible_names.h"
#include "resources/embedded_resources.h"

#include "ce/resource.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iomanip>
#include <set>
#include <sstream>
#include <stdexcept>

namespace {

using platform::resource::ResourceFile;

constexpr WORD BitmapType = 2;
constexpr WORD IconType = 3;
constexpr WORD MenuType = 4;
constexpr WORD DialogType = 5;
constexpr WORD IconGroupType = 14;

const ResourceFile& resources()
{
    static const std::optional<ResourceFile> file = ResourceFile::parse(quillbox::embeddedResources());
    return *file;
}

// Reads on through one resource; past its end it throws.
class Reader {
public:
    Reader(WORD type, WORD id)
    {
        const platform::resource::Resource* entry = resources().find(type, id);
        if (!entry)
            throw std::runtime_error("no such resource");
        bytes_ = entry->bytes;
    }

    template <class Number>
    Number number()
    {
        Number value{};
        if (bytes_.size() < offset_ + sizeof value)
            throw std::runtime_error("resource too short");
        std::memcpy(&value, bytes_.data() + offset_, sizeof value);
        offset_ += sizeof value;
        return value;
    }
    WORD word() { return number<WORD>(); }

    std::string text()
    {
        std::string narrow;
        for (WORD unit = word(); unit != 0; unit = word())
            narrow.push_back(static_cast<char>(unit));
        return narrow;
    }

    // A class or text of a template: a text, or #number.
    std::string textOrNumber()
    {
        if (bytes_.size() >= offset_ + 4 && bytes_[offset_] == std::byte{0xFF} &&
            bytes_[offset_ + 1] == std::byte{0xFF}) {
            word();
            return "#" + std::to_string(word());
        }
        return text();
    }

    std::string place()
    {
        std::ostringstream out;
        for (const char* separator : {"", ",", " ", "x"})
            out << separator << number<SHORT>();
        return out.str();
    }

    void align() { offset_ = (offset_ + 3) / 4 * 4; }
    [[nodiscard]] std::size_t left() const { return bytes_.size() - offset_; }
    [[nodiscard]] std::size_t size() const { return bytes_.size(); }

private:
    std::span<const std::byte> bytes_;
    std::size_t offset_ = 0;
};

std::string hex(DWORD value)
{
    std::ostringstream out;
    out << std::hex << std::setw(8) << std::setfill('0') << value;
    return out.str();
}

std::string className(const std::string& stored)
{
    const std::pair<const char*, const char*> atoms[] = {
        {"#128", "BUTTON"}, {"#129", "EDIT"}, {"#130", "STATIC"}, {"#131", "LISTBOX"}};
    for (const auto& [atom, name] : atoms) {
        if (stored == atom)
            return name;
    }
    return stored;
}

// A plain template, a line each: the dialog, then its controls.
std::string dialog(WORD id)
{
    Reader in(DialogType, id);
    std::ostringstream out;
    const auto style = in.number<DWORD>();
    const auto exStyle = in.number<DWORD>();
    const WORD controls = in.word();
    out << hex(style) << ' ' << hex(exStyle) << ' ' << in.place();
    EXPECT_EQ(in.textOrNumber(), "") << "a menu";
    EXPECT_EQ(in.textOrNumber(), "") << "a class";
    out << " \"" << in.textOrNumber() << '"';
    const WORD points = in.word();
    out << ' ' << points << ' ' << in.text() << '\n';
    for (WORD i = 0; i < controls; ++i) {
        in.align();
        const auto controlStyle = in.number<DWORD>();
        EXPECT_EQ(in.number<DWORD>(), 0u) << "an extended style";
        const std::string place = in.place();
        const auto controlId = static_cast<SHORT>(in.word());
        const std::string controlClass = className(in.textOrNumber());
        out << controlId << ' ' << controlClass << " \"" << in.textOrNumber() << "\" " << hex(controlStyle) << ' '
            << place << '\n';
        EXPECT_EQ(in.word(), 0) << "creation data";
    }
    return out.str();
}

std::string menuLevel(Reader& in, int depth)
{
    constexpr WORD Popup = 0x10;
    constexpr WORD End = 0x80;
    std::string out;
    for (WORD flags = 0; !(flags & End);) {
        flags = in.word();
        const bool popup = flags & Popup;
        const WORD id = popup ? WORD{0} : in.word();
        out += std::string(static_cast<std::size_t>(depth), ' ') + in.text() + ' ' + std::to_string(id) + '\n';
        if (popup)
            out += menuLevel(in, depth + 1);
    }
    return out;
}

TEST(EmbeddedResourcesTest, FileIsWhole)
{
    const auto file = ResourceFile::parse(quillbox::embeddedResources());
    ASSERT_TRUE(file);
    EXPECT_TRUE(file->isWhole());
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(quillbox::embeddedResources().data()) % 4, 0u);
}

TEST(EmbeddedResourcesTest, TextsStandUnderTheirNumbers)
{
    ASSERT_TRUE(platform::resource::setResources(quillbox::embeddedResources()));
    const char16_t* const reboot =
        u"I have restored the registry, to activate the registry restoration you have to do a device warm reboot, "
        u"follow your compagnion instructions";
    const char16_t* const texts[] = {
        u"File: %s",
        u"File:%s exists replace ?",
        u"Restored: %d ",
        u"Restoring Database(s)",
        u"Database: %s",
        u"Registry",
        reboot,
        u"Restore",
        u"No Backup File found",
        u"Select backup file",
        u"No item to backup!",
        u"Backup date:%02d/%02d/%04d (%02d:%02d)\r\nComments:\r\n%s",
        u"Main device",
        u"Select your storage",
        u"Backuping Files",
        u"Override %s file",
        u"Backuped: %d",
        u"Databases ",
        u"Construct File List",
        u"Construct Database List",
        u"Computing list to backup",
        u"Database:%s exists replace ?",
        u"You must select an item",
        u"File:%s",
        u"Database:%s",
        u"Select items to restore",
        u"Full Restore",
        u"Restoring Files",
        u"Warning",
        u"Restore selection",
        u"No Item to restore !",
    };
    UINT id = 114;
    for (const char16_t* text : texts) {
        WCHAR buffer[260];
        const LONG_PTR length = LoadStringW(nullptr, id, buffer, 260);
        EXPECT_EQ(std::u16string(buffer, static_cast<std::size_t>(length)), text) << id;
        ++id;
    }
    EXPECT_EQ(id, 145u);
    WCHAR buffer[260];
    EXPECT_EQ(LoadStringW(nullptr, 113, buffer, 260), 0);
    EXPECT_EQ(LoadStringW(nullptr, 145, buffer, 260), 0);
    platform::resource::setResources({});
}

TEST(EmbeddedResourcesTest, MenuLeadsToTheCommands)
{
    Reader in(MenuType, 104);
    ASSERT_EQ(in.number<DWORD>(), 0u);
    EXPECT_EQ(menuLevel(in, 0), R"(File 0
 Filter... 40010
 Options... 40011
 About... 40009
  0
 Exit 40002
Operations 0
 Backup 0
  Full... 40003
  Selected items... 40005
 Restore 0
  Full... 40006
  Partial... 40007
)");
    EXPECT_EQ(in.left(), 0u);
}

TEST(EmbeddedResourcesTest, DialogsHaveTheirControls)
{
    EXPECT_EQ(dialog(106), R"(90c008c0 00000000 0,0 152x85 "" 8 MS Sans Serif
1001 msctls_progress32 "Progress1" 50800000 7,48 138x19
1002 STATIC "Message" 50020000 7,7 138x34
1029 STATIC "" 50020000 7,70 138x8
)");
    EXPECT_EQ(dialog(107), R"(90c808c0 80000000 0,0 127x95 "Select" 8 MS Sans Serif
1003 LISTBOX "" 50b11103 7,32 113x56
1002 STATIC "Info" 50020000 7,7 113x20
)");
    EXPECT_EQ(dialog(108), R"(80c808c0 80000000 0,0 156x111 "Full Backup" 8 MS Sans Serif
-1 STATIC "Backupset comments" 50020000 7,7 142x11
1004 EDIT "" 508110c4 7,21 142x51
1005 BUTTON "All files" 50010003 10,75 82x8
1006 BUTTON "All databases" 50010003 10,85 82x8
1007 BUTTON "Registry" 50010003 10,95 82x8
)");
    EXPECT_EQ(dialog(109), R"(80c808c0 80000000 0,0 156x118 "Backup selected Item" 8 MS Sans Serif
-1 STATIC "Backupset comments" 50020000 7,7 142x11
1004 EDIT "" 508110c4 7,18 142x31
1006 LISTBOX "" 50b1110b 7,70 142x40
1007 STATIC "Items to backup:" 50020000 7,58 130x10
)");
    EXPECT_EQ(dialog(110), R"(90c808c0 80000000 0,0 149x114 "File filter" 8 MS Sans Serif
1014 BUTTON "Show only files with these extentions :" 50010003 7,8 132x10
1015 LISTBOX "" 58a10103 9,21 71x28
1016 EDIT "" 58810080 123,20 18x12
1017 BUTTON "Add" 58010000 88,20 31x11
1018 BUTTON "Remove" 58010000 88,38 31x11
1024 BUTTON "Show files newer than :" 50010003 9,58 87x10
1020 EDIT "" 58810080 96,56 44x13
1021 BUTTON "Archive" 50010003 9,91 42x8
1026 BUTTON "Hidden" 50010003 9,104 45x8
1027 BUTTON "System" 50010003 69,92 38x8
1028 BUTTON "Read-only" 50010003 69,104 48x8
-1 STATIC "Hide files with these attributes :" 50020000 7,78 135x8
)");
    EXPECT_EQ(dialog(111), R"(80c808c0 80000000 0,0 142x113 "Options" 8 MS Sans Serif
1022 BUTTON "Delete backuped files" 50010003 7,7 96x14
1023 BUTTON "Replace existing files" 50000009 16,75 92x10
1024 BUTTON "Skip existing files" 50000009 16,86 75x10
1025 BUTTON "Ask" 50000009 16,97 75x10
-1 BUTTON "Restore options" 50000007 7,65 124x47
1026 BUTTON "Generate log file" 50010003 7,19 120x14
-1 STATIC "Maximum backup file size:" 50020000 9,49 86x11
1027 EDIT "" 58810080 100,47 17x13
-1 STATIC "MB" 50020000 120,50 15x12
1028 BUTTON "Verify backuped file" 50010003 7,34 117x8
)");
    // The wording below the first line is free, its place is not.
    const std::string about = dialog(103);
    EXPECT_TRUE(about.starts_with("80c808c4 80000000 0,0 151x47 \"Quillbox\" 8 MS Sans Serif\n"
                                  "-1 STATIC \"#109\" 50000003 5,5 20x20\n"
                                  "-1 STATIC \"Quillbox v1.0\n"))
        << about;
    EXPECT_NE(about.find("\" 50020000 35,5 115x27\n"), std::string::npos) << about;
    EXPECT_TRUE(about.ends_with("\" 50020001 0,35 150x8\n")) << about;
}

TEST(EmbeddedResourcesTest, PicturesHaveTheSizesThatTheirCellsNeed)
{
    const std::tuple<WORD, int, int> bitmaps[] = {{101, 864, 45}, {106, 80, 16}, {107, 16, 16}};
    for (const auto& [id, width, height] : bitmaps) {
        SCOPED_TRACE(id);
        Reader in(BitmapType, id);
        EXPECT_EQ(in.number<DWORD>(), 40u);
        EXPECT_EQ(in.number<LONG>(), width);
        EXPECT_EQ(in.number<LONG>(), height);
        EXPECT_EQ(in.word(), 1);
        EXPECT_EQ(in.word(), 4);
        const auto rowBytes = static_cast<std::size_t>(width) * 4 / 8;
        EXPECT_EQ(in.size(), 40 + 16 * 4 + rowBytes * static_cast<std::size_t>(height));
    }

    Reader group(IconGroupType, 109);
    EXPECT_EQ(group.word(), 0);
    EXPECT_EQ(group.word(), 1);
    const WORD images = group.word();
    bool small = false;
    for (WORD i = 0; i < images; ++i) {
        const auto width = group.number<BYTE>();
        small |= width == 16;
        EXPECT_EQ(group.number<BYTE>(), width);
        group.word();
        group.number<DWORD>();
        const auto size = group.number<DWORD>();
        EXPECT_EQ(Reader(IconType, group.word()).size(), size);
    }
    EXPECT_TRUE(small);
    EXPECT_EQ(group.left(), 0u);
}

TEST(EmbeddedResourcesTest, EachPictureHasOneName)
{
    std::set<std::pair<int, int>> named;
    for (const quillbox::AccessibleName& name : quillbox::AccessibleNames) {
        EXPECT_TRUE(named.emplace(name.bitmap, name.cell).second) << name.bitmap << ' ' << name.cell;
        EXPECT_FALSE(name.text.empty());
    }
    for (int cell = 0; cell < 18; ++cell)
        EXPECT_FALSE(quillbox::accessibleName(101, cell).empty()) << cell;
    for (int cell = 0; cell < 5; ++cell)
        EXPECT_FALSE(quillbox::accessibleName(106, cell).empty()) << cell;
    EXPECT_TRUE(quillbox::accessibleName(106, 5).empty());
}

}  // namespace
