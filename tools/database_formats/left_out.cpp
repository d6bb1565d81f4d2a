#include "database_formats/left_out.h"

#include "screen_text/screen_text.h"

#include "text/host_name.h"

namespace database_formats {

namespace {

// Limit the memory and the length of the message for a file with many unknown names.
constexpr std::size_t MostNames = 30;
constexpr std::size_t LongestName = 60;

}  // namespace

std::string shownName(std::string_view name)
{
    return screen_text::onScreen(name.substr(0, LongestName));
}

void NameCount::add(std::string_view name)
{
    ++count_;
    const std::string shown = shownName(name);
    const auto known = names_.find(shown);
    if (known != names_.end())
        ++known->second;
    else if (names_.size() < MostNames)
        names_.emplace(shown, 1);
}

std::string NameCount::text() const
{
    std::string text;
    std::size_t named = 0;
    for (const auto& [name, times] : names_) {
        text += (named == 0 ? "" : ", ") + name + " " + std::to_string(times);
        named += times;
    }
    return named == count_ ? text : text + ", others " + std::to_string(count_ - named);
}

std::string LeftOut::sentence() const
{
    return std::to_string(count()) + (count() == 1 ? " field was left out: " : " fields were left out: ") +
           names_.text();
}

std::vector<std::string> LeftOut::sentences() const
{
    std::vector<std::string> all;
    if (count() != 0)
        all.push_back(sentence());
    const std::size_t guesses = guesses_.count();
    const char* const words = guesses == 1 ? " field names no character set and was read as Windows-1252: "
                                           : " fields name no character set and were read as Windows-1252: ";
    if (guesses != 0)
        all.push_back(std::to_string(guesses) + words + guesses_.text());
    all.insert(all.end(), notes_.begin(), notes_.end());
    return all;
}

}  // namespace database_formats
