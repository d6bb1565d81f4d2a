#include "telling.h"

#include "exit_codes.h"
#include "trouble_sentences.h"

#include <algorithm>
#include <iostream>

namespace platform::device {

std::string onScreen(std::string text)
{
    std::ranges::replace_if(
        text, [](unsigned char byte) { return byte < ' ' || byte == 0x7F; }, '?');
    return text;
}

int tell(const std::string& sentence, int exitCode)
{
    std::cerr << "quillbox: " << onScreen(sentence) << '\n';
    return exitCode;
}

void tellWarnings(const OpenResult& opened)
{
    for (const std::string& warning : opened.warnings)
        (void)tell(warning, 0);
}

int tellLeftOut(int exitCode)
{
    const auto all = whatWasLeftOut(kernel::Since::Start);
    for (const LeftOut& leftOut : all) {
        (void)tell(leftOut.sentence, exitCode);
        for (const std::string& name : leftOut.furtherOnes)
            (void)tell("    " + name, exitCode);
        if (leftOut.unnamed != 0)
            (void)tell("    and " + std::to_string(leftOut.unnamed) + " more", exitCode);
    }
    return exitCode == ExitComplete && !all.empty() ? ExitLeftOut : exitCode;
}

}  // namespace platform::device
