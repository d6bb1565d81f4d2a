// registry_fixture.h - a registry in a temporary folder.
#pragma once

#include "host_folder.h"
#include "registry/registry_store.h"

#include "ce/registry.h"

#include <string>

inline const std::u16string RegistryTextHead = u"\xFEFFWindows Registry Editor Version 5.00\r\n";

class RegistryFixture : public HostFolder {
protected:
    ~RegistryFixture() override { platform::registry::closeRegistry(); }

    [[nodiscard]] std::filesystem::path file() const { return at("device.db"); }

    // Opens the registry. Returns the error or warning, or an empty text.
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
};
