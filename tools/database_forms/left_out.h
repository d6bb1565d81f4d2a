// left_out.h - what a file says and a database has no place for, counted by name.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

namespace database_forms {

// A name out of a file as a message may show it: 40 bytes of it, without control characters.
[[nodiscard]] std::string shownName(std::string_view name);

class LeftOut {
public:
    void add(std::string_view name);

    [[nodiscard]] std::size_t count() const { return count_; }

    // "12 fields were left out: PHOTO 10, X-NICK 2"
    [[nodiscard]] std::string sentence() const;

private:
    std::size_t count_ = 0;
    std::map<std::string, std::size_t, std::less<>> names_;
};

}  // namespace database_forms
