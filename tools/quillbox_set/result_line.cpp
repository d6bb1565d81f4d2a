#include "result_line.h"

#include "exit_code.h"
#include "json_list.h"
#include "screen_text/screen_text.h"

#include <chrono>
#include <iostream>

namespace quillbox_set {

namespace {

constexpr auto BetweenFlushes = std::chrono::milliseconds(20);

}

nlohmann::ordered_json jsonText(std::string_view bytes)
{
    return std::string(bytes);
}

void printResult(bool json, const nlohmann::ordered_json& object, const std::string& text)
{
    using Json = nlohmann::ordered_json;
    static std::chrono::steady_clock::time_point nextFlush;
    if (json) {
        Json line = {{"version", JsonVersion}};
        line.update(object);
        std::cout << line.dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
    } else {
        std::cout << text << '\n';
    }
    if (const auto now = std::chrono::steady_clock::now(); now >= nextFlush) {
        std::cout.flush();
        nextFlush = now + BetweenFlushes;
    }
}

int reportTrouble(const std::string& text)
{
    std::cerr << "quillbox-set: " << text << "\n";
    return exitNoSet;
}

void reportLeftOut(std::u16string_view database, const database_formats::LeftOut& leftOut)
{
    if (leftOut.count() != 0)
        std::cerr << "quillbox-set: " << screen_text::onScreen(database) << ": " << leftOut.sentence() << ".\n";
}

int reportFaults(const archive::FoundSets& found)
{
    int code = exitGood;
    for (const std::string& fault : found.faults)
        code = reportTrouble(fault);
    return code;
}

}  // namespace quillbox_set
