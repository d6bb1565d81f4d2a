// Content by the kilobyte, the same for the same size.
#include "demonstration_text.h"

#include <cstdint>

namespace platform::device {

namespace {

// Numbers that are alike on every host (the standard's distributions are not).
class Dice {
public:
    explicit Dice(std::uint64_t seed) : state_(seed * 2 + 1) {}

    std::uint32_t next()
    {
        state_ = state_ * 6364136223846793005U + 1442695040888963407U;
        return static_cast<std::uint32_t>(state_ >> 33);
    }
    std::uint32_t below(std::size_t limit) { return next() % static_cast<std::uint32_t>(limit); }
    template <std::size_t Count>
    const char* oneOf(const char* const (&words)[Count])
    {
        return words[below(Count)];
    }

private:
    std::uint64_t state_;
};

constexpr const char* starts[] = {"In the morning", "After lunch",    "Before the rain", "With Ines", "At low tide",
                                  "Once again",     "To my surprise", "By lamplight",    "Slowly",    "On the slipway"};
constexpr const char* people[] = {"I", "we", "the carpenter", "my brother", "the harbour master", "the two of us"};
constexpr const char* deeds[] = {"planed",  "measured", "glued",     "sanded",  "painted", "fitted",
                                 "cleaned", "drew",     "lifted up", "caulked", "oiled",   "tested"};
constexpr const char* things[] = {"the keel",  "a plank of larch", "the third frame",  "both thwarts",  "the rudder",
                                  "the mast",  "an old cleat",     "the tiller",       "every rivet",   "the hatch",
                                  "the bilge", "the port side",    "a length of rope", "the stern post"};
constexpr const char* ends[] = {"until it got dark",
                                "and it held",
                                "though the wood was damp",
                                "for two hours",
                                "with better results",
                                "and had tea",
                                "twice",
                                "by the book",
                                "without a single curse",
                                "down to the pier"};
constexpr const char* wares[] = {"groceries",   "rent",  "train ticket", "books",
                                 "electricity", "shoes", "dentist",      "gifts"};

std::string numberOf(unsigned number, std::size_t digits)
{
    std::string text = std::to_string(number);
    return text.size() < digits ? std::string(digits - text.size(), '0') + text : text;
}

std::string dateOf(unsigned day)
{
    return "2025-" + numberOf(1 + day / 28 % 12, 2) + "-" + numberOf(1 + day % 28, 2);
}

}  // namespace

std::string generatedText(std::size_t bytes)
{
    Dice dice(bytes);
    std::string text;
    for (unsigned day = 0; text.size() < bytes; ++day) {
        text += dateOf(day) + "\r\n";
        for (std::uint32_t sentences = 3 + dice.below(6); sentences > 0; --sentences)
            text.append(dice.oneOf(starts))
                .append(" ")
                .append(dice.oneOf(people))
                .append(" ")
                .append(dice.oneOf(deeds))
                .append(" ")
                .append(dice.oneOf(things))
                .append(" ")
                .append(dice.oneOf(ends))
                .append(". ");
        text += "\r\n\r\n";
    }
    text.resize(bytes);
    return text;
}

std::string generatedTable(std::size_t bytes)
{
    Dice dice(bytes);
    std::string table = "date;what;amount\r\n";
    for (unsigned row = 0; table.size() < bytes; ++row)
        table += dateOf(row / 2) + ";" + dice.oneOf(wares) + ";" + std::to_string(dice.below(300)) + "." +
                 numberOf(dice.below(100), 2) + "\r\n";
    table.resize(bytes);
    return table;
}

std::string generatedBytes(std::size_t bytes)
{
    Dice dice(bytes);
    std::string result(bytes, '\0');
    for (char& byte : result)
        byte = static_cast<char>(dice.next());
    return result;
}

}  // namespace platform::device
