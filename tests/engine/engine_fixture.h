// engine_fixture.h - a real device in a temporary folder, with a card, for the tests of the runs.
#pragma once

#include "scripted_user.h"

#include "ce/types.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

// Formats by hand: 4 bytes of a number, characters of an ASCII text with its terminator, one entry of a list file.
std::string numberBytes(std::uint32_t value);
std::string textBytes(const std::string& text);
std::string entryBytes(char kind, const std::string& name, std::uint32_t start, std::uint32_t end);

class EngineTest : public ::testing::Test {
protected:
    EngineTest();
    ~EngineTest() override;

    // Takes the device's folders in force; the card with a capacity if one is given.
    void mount(std::optional<std::uint64_t> cardCapacity = std::nullopt);

    // Files of the object store, by host path below it.
    void write(const std::string& name, const std::string& content);
    std::string read(const std::string& name) const;
    bool exists(const std::string& name) const;
    void removeAll(const std::string& name);

    // Gives the device its databases, which most tests need none of.
    void openStore() const;
    static void makeDatabase(const std::u16string& name, DWORD type);
    // 0 if there is none of that name.
    static DWORD typeOfDatabase(const std::u16string& name);

    static void mark(const std::u16string& path);
    static void markDatabase(const std::u16string& name);
    // One backup of what is marked onto the card, with a fresh user who agrees to it; a card's set numbers go on.
    static void backUp();
    // Restores set 1 of the card, everything replaced.
    void restore(const std::string& list = "QLBX0001");

    std::string cardFile(const std::string& name) const;  // of QUILBOX on the card

    std::filesystem::path base_;
    std::filesystem::path store_;
    std::filesystem::path card_;
};
