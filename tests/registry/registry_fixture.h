// registry_fixture.h - a registry in a temporary folder.
#pragma once

#include "registry/registry_store.h"

#include "ce/registry.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

inline const std::u16string RegistryTextHead = u"\xFEFFWindows Registry Editor Version 5.00\r\n";

class RegistryFixture : public testing::Test {
protected:
    RegistryFixture()
    {
        std::string pattern = testing::TempDir() + "registry-XXXXXX";
        folder_ = mkdtemp(pattern.data());
    }

    ~RegistryFixture() override
    {
        platform::registry::closeRegistry();
        std::filesystem::remove_all(folder_);
    }

    [[nodiscard]] std::filesystem::path file() const { return folder_ / "device.db"; }

    // The error or warning. Empty if there is none.
    [[nodiscard]] std::string open() const
    {
        std::string sentence;
        EXPECT_TRUE(platform::registry::openRegistry(file(), sentence) || !sentence.empty());
        return sentence;
    }
    [[nodiscard]] std::string reopened() const
    {
        platform::registry::closeRegistry();
        return open();
    }

    static std::string contentOf(const std::filesystem::path& path)
    {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    static void put(const std::filesystem::path& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
    }

    static LONG make(HKEY parent, const std::u16string& subKey, HKEY& key, DWORD* disposition = nullptr)
    {
        return RegCreateKeyExW(parent, subKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, disposition);
    }
    static HKEY made(HKEY parent, const std::u16string& subKey)
    {
        HKEY key = nullptr;
        EXPECT_EQ(make(parent, subKey, key), 0);
        return key;
    }
    static LONG set(HKEY key, const WCHAR* name, const std::string& data, DWORD type = REG_BINARY)
    {
        return RegSetValueExW(key, name, 0, type, reinterpret_cast<const BYTE*>(data.data()),
                              static_cast<DWORD>(data.size()));
    }
    static std::string get(HKEY key, const WCHAR* name)
    {
        DWORD size = 0;
        if (RegQueryValueExW(key, name, nullptr, nullptr, nullptr, &size) != 0)
            return "none";
        std::string data(size, '#');
        EXPECT_EQ(RegQueryValueExW(key, name, nullptr, nullptr, reinterpret_cast<BYTE*>(data.data()), &size), 0);
        return data;
    }

private:
    std::filesystem::path folder_;
};
