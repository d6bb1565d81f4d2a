// image_fixture.h - an object store, a folder for its images, and an image written by hand.
#pragma once

#include "set/database_image.h"

#include "file/name_space.h"
#include "scripted_questions.h"
#include "store_fixture.h"
#include "written_bytes.h"

#include "ce/file.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

namespace fs = std::filesystem;

// The image of a database "Ab" of type 0x01020304 with one sort order and two records. The records contain a property
// of each type, including a BOOL, whose value an image doesn't keep. In an image the record that was made last comes
// first.
inline const std::string goldenImage = hex("06 00 00 00  41 00 62 00 00 00"
                                           " 04 03 02 01  02 00  01 00"
                                           " 1F 00 02 00  01 00 00 00"
                                           " 01 00  0B 00 09 00  07 00"
                                           " 07 00"
                                           " 02 00 01 00  FE FF  00 00"
                                           " 12 00 02 00  FF FF  00 00"
                                           " 03 00 03 00  00 00 00 80  01 00"
                                           " 13 00 04 00  04 03 02 01  00 00"
                                           " 1F 00 05 00  04 00 00 00  42 00 00 00  00 00"
                                           " 40 00 06 00  01 00 00 00 02 00 00 00  00 00"
                                           " 41 00 07 00  03 00 00 00  0A 00 0D  02 00");

inline Records goldenRecords()
{
    return {{number(1, CEVT_I2, SHORT{-2}), number(2, CEVT_UI2, USHORT{0xFFFF}),
             number(3, CEVT_I4, LONG{-2147483647 - 1}, 1), number(4, CEVT_UI4, ULONG{0x01020304}), text(5, u"B"),
             number(6, CEVT_FILETIME, FILETIME{1, 2}), blob(7, std::string("\n\0\r", 3), 2)},
            {number(9, CEVT_BOOL, BOOL{1}, 7)}};
}

inline Records reversed(Records records)
{
    std::reverse(records.begin(), records.end());
    return records;
}

class DatabaseImageTest : public StoreTest {
protected:
    DatabaseImageTest()
    {
        answerQuestions();
        fs::create_directory(root());
        mount();
    }
    ~DatabaseImageTest() override { platform::file::removeAllMounts(); }

    // Mounts the root again, with this capacity in bytes.
    void mount(std::optional<std::uint64_t> capacity = {}) const
    {
        platform::file::removeAllMounts();
        EXPECT_TRUE(platform::file::addMount(
            {u"", ::open(root().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC), false, capacity}));
    }

    [[nodiscard]] fs::path root() const { return at("object-store"); }

    [[nodiscard]] std::string image(const std::string& name) const { return hostRead(root() / (name + ".CDB")); }

    [[nodiscard]] RestoreResult restore(const std::string& bytes, const std::string& name = "Ab") const
    {
        hostWrite(root() / (name + ".CDB"), bytes);
        const std::u16string path = u"\\" + std::u16string(name.begin(), name.end()) + u".CDB";
        const RestoreResult restored = RestoreDatabase(path.c_str());
        EXPECT_EQ(image(name), bytes);
        return restored;
    }

    static void makeGolden()
    {
        const SORTORDERSPEC order = {0x0002001F, 1};
        ASSERT_NE(CeCreateDatabase(u"Ab", 0x01020304, 1, &order), 0U);
        const OpenDatabase database(u"Ab");
        for (const Record& record : goldenRecords())
            add(database, record);
    }

    // The records after a restore. An image doesn't keep the value of a BOOL.
    static Records goldenRestored()
    {
        Records records = reversed(goldenRecords());
        records[0][0].value = std::string(sizeof(CEVALUNION), '\0');
        return records;
    }

    // Compares everything about the database but its oid and times.
    static void expectGolden(const Records& records)
    {
        const CEDBASEINFO info = infoOf(u"Ab");
        EXPECT_EQ(info.dwDbaseType, 0x01020304U);
        EXPECT_EQ(info.wNumSortOrder, 1);
        EXPECT_EQ(info.rgSortSpecs[0].propid, 0x0002001FU);
        EXPECT_EQ(info.rgSortSpecs[0].dwFlags, 1U);
        EXPECT_EQ(recordsOf(u"Ab"), records);
    }

    static void makeOld(const std::u16string& name) { create(name, 9, {{text(1, u"old")}}); }
    static bool isOld(const std::u16string& name)
    {
        return exists(name) && infoOf(name).dwDbaseType == 9 && recordsOf(name) == Records{{text(1, u"old")}};
    }
};
