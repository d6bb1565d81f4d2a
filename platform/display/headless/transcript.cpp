#include "transcript.h"

#include "pattern.h"
#include "text/host_name.h"

#include <ostream>

namespace platform::headless {

void Transcript::add(std::string_view line)
{
    if (!out_)
        return;
    const std::lock_guard guard(mutex_);
    pending_ += line;
    pending_ += '\n';
}

void Transcript::writeOut()
{
    if (!out_)
        return;
    std::string lines;
    {
        const std::lock_guard guard(mutex_);
        lines.swap(pending_);
    }
    if (!lines.empty())
        *out_ << lines << std::flush;
}

std::string quoted(std::u16string_view text)
{
    std::string result = "\"";
    for (const char unit : text::toUtf8(onOneLine(text))) {
        result += unit;
        if (unit == '"')
            result += '"';
    }
    return result + '"';
}

}  // namespace platform::headless
