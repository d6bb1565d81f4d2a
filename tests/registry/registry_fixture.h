// registry_fixture.h - a registry in a temporary folder.
#pragma once

#include "registry/registry_store.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

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

    // What it says; nothing when it opened without a word.
    [[nodiscard]] std::string open() const
    {
        std::string sentence;
        EXPECT_TRUE(platform::registry::openRegistry(file(), sentence) || !sentence.empty());
        return sentence;
    }

private:
    std::filesystem::path folder_;
};
