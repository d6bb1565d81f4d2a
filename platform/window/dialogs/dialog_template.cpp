#include "dialog_template.h"

#include "window/byte_reader.h"

#include "ce/dialog.h"

#include <array>
#include <string_view>

namespace platform::window {

namespace {

constexpr WORD OrdinalFollows = 0xFFFF;
constexpr WORD FirstClassAtom = 0x80;
constexpr std::array<std::u16string_view, 6> StandardClasses = {u"Button",  u"Edit",      u"Static",
                                                                u"ListBox", u"ScrollBar", u"ComboBox"};

// A field for a menu, a class or a text. It is empty, or it contains a number or characters.
struct NameField {
    std::optional<WORD> ordinal;
    std::u16string text;

    bool isEmpty() const { return !ordinal && text.empty(); }
};

NameField readName(ByteReader& reader)
{
    NameField field;
    const WORD first = reader.word();
    if (first == OrdinalFollows)
        field.ordinal = reader.word();
    else if (first != 0)
        field.text = static_cast<char16_t>(first) + reader.text();
    return field;
}

template <class Template>
void readRectangle(ByteReader& reader, Template& placed)
{
    placed.x = reader.signedWord();
    placed.y = reader.signedWord();
    placed.width = reader.signedWord();
    placed.height = reader.signedWord();
}

bool takeClass(const NameField& field, ControlTemplate& control)
{
    if (!field.ordinal) {
        control.className = field.text;
        return !field.text.empty();
    }
    const std::size_t index = static_cast<std::size_t>(*field.ordinal) - FirstClassAtom;
    if (index >= StandardClasses.size())
        return false;
    control.className = StandardClasses[index];
    return true;
}

// Converts a control's id from the plain format. A control without an id has 0xFFFF in this format. In the extended
// format such a control has 0xFFFFFFFF, which is -1 as an int. So the result for such a control is -1 in both formats.
int plainId(WORD id)
{
    return id == 0xFFFF ? -1 : int{id};
}

std::optional<ControlTemplate> readControl(ByteReader& reader, bool extended)
{
    reader.alignToDword();
    ControlTemplate control;
    if (extended) {
        reader.dword();  // help id
        control.exStyle = reader.dword();
        control.style = reader.dword();
    } else {
        control.style = reader.dword();
        control.exStyle = reader.dword();
    }
    readRectangle(reader, control);
    control.id = extended ? static_cast<int>(reader.dword()) : plainId(reader.word());
    if (!takeClass(readName(reader), control))
        return std::nullopt;
    const NameField text = readName(reader);
    control.text = text.text;
    control.iconId = text.ordinal.value_or(0);
    reader.skip(reader.word());  // creation data
    return reader.failed() ? std::nullopt : std::optional(std::move(control));
}

void skipFont(ByteReader& reader, bool extended)
{
    reader.word();  // points
    if (extended)
        reader.skip(4);  // weight, italic, charset
    reader.text();
}

}  // namespace

std::optional<DialogTemplate> readDialogTemplate(std::span<const std::byte> bytes)
{
    ByteReader reader(bytes);
    DialogTemplate dialog;
    const DWORD first = reader.dword();
    const bool extended = LOWORD(first) == 1 && HIWORD(first) == 0xFFFF;
    if (extended) {
        reader.dword();  // help id
        dialog.exStyle = reader.dword();
        dialog.style = reader.dword();
    } else {
        dialog.style = first;
        dialog.exStyle = reader.dword();
    }
    const WORD count = reader.word();
    readRectangle(reader, dialog);
    const NameField menu = readName(reader);
    const NameField className = readName(reader);
    const NameField title = readName(reader);
    if (dialog.style & DS_SETFONT)
        skipFont(reader, extended);
    if (reader.failed() || !menu.isEmpty() || !className.isEmpty())
        return std::nullopt;
    dialog.title = title.text;
    for (WORD index = 0; index < count; ++index) {
        auto control = readControl(reader, extended);
        if (!control)
            return std::nullopt;
        dialog.controls.push_back(std::move(*control));
    }
    return dialog;
}

namespace {

int scaled(int value, int base, int divisor)
{
    const int product = value * base;
    return (product >= 0 ? product + divisor / 2 : product - divisor / 2) / divisor;
}

}  // namespace

int horizontalPixels(int units)
{
    return scaled(units, 6, 4);
}

int verticalPixels(int units)
{
    return scaled(units, 13, 8);
}

}  // namespace platform::window
