// host_folder.h - a temporary folder of the host for one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <string>

class HostFolder : public testing::Test {
protected:
    HostFolder()
    {
        std::string pattern = testing::TempDir() + "device-XXXXXX";
        root_ = mkdtemp(pattern.data());
    }
    ~HostFolder() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(root_, ignored);
    }

    [[nodiscard]] std::filesystem::path at(const std::string& name) const { return root_ / name; }

    void write(const std::filesystem::path& file, const std::string& content) const
    {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
    }

    // Every file and folder below, with the files' content; the database is not compared.
    [[nodiscard]] static std::map<std::string, std::string> treeOf(const std::filesystem::path& folder)
    {
        std::map<std::string, std::string> tree;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            std::string& content = tree[std::filesystem::relative(entry.path(), folder)];
            if (entry.is_regular_file() && !entry.path().filename().string().starts_with("device.")) {
                std::ifstream stream(entry.path(), std::ios::binary);
                content.assign(std::istreambuf_iterator<char>(stream), {});
            }
        }
        return tree;
    }

private:
    std::filesystem::path root_;
};
