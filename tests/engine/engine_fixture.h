// engine_fixture.h - a device with a card, for the tests of the runs. Its clock always shows 5 March 2000, 09:07:03.
#pragma once

#include "file_fixture.h"
#include "scripted_user.h"
#include "written_bytes.h"

#include <vector>

class EngineTest : public FileTest {
protected:
    EngineTest();
    ~EngineTest() override;

    // Mounts the device's folders, the card with a capacity if one is given.
    void mount(std::optional<std::uint64_t> cardCapacity = std::nullopt) const;

    // Files of the object store, by host path below it.
    void write(const std::string& name, const std::string& content) const;
    std::string read(const std::string& name) const { return hostRead(root() / name); }
    bool exists(const std::string& name) const;
    void removeAll(const std::string& name) const;

    // Files of QUILBOX on the card.
    void writeOnCard(const std::string& name, const std::string& content) const;
    std::string readOnCard(const std::string& name) const { return hostRead(set_ / name); }

    // Opens the databases of the device. Few tests need them.
    void openStore() const;
    static void makeDatabase(const std::u16string& name, DWORD type);
    // 0 if no database has this name.
    static DWORD typeOfDatabase(const std::u16string& name);

    static void mark(const std::u16string& path);
    static void markDatabase(const std::u16string& name);
    // Backs the marked items up to the card.
    static void backUp();
    // Restores set 1 of the card. All files are replaced unless the test sets another policy.
    static void restore();

    std::filesystem::path card_;
    std::filesystem::path set_;
};
