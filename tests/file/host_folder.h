// host_folder.h - a temporary folder of the host for one test.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

class HostFolder : public testing::Test {
protected:
    explicit HostFolder(const std::filesystem::path& parent = std::filesystem::temp_directory_path())
    {
        std::string pattern = parent / "quillbox-test-XXXXXX";
        if (!mkdtemp(pattern.data()))
            std::abort();
        base_ = pattern;
    }
    ~HostFolder() override
    {
        std::error_code ignored;
        std::filesystem::remove_all(base_, ignored);
    }
    // Returns the parent folder for tests that don't need a real disk. If TMPDIR is set, that is the folder of TMPDIR.
    // Otherwise it is a folder in memory if there is one, because a flush costs nothing there.
    static std::filesystem::path memoryFolder()
    {
        const bool useMemory = !std::getenv("TMPDIR") && std::filesystem::is_directory("/dev/shm");
        return useMemory ? "/dev/shm" : std::filesystem::temp_directory_path();
    }

    [[nodiscard]] std::filesystem::path at(const std::string& name) const { return base_ / name; }

    // Writes the file, and creates the folders above it.
    static void hostWrite(const std::filesystem::path& file, const std::string& bytes)
    {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << bytes;
    }
    // Returns the content of the file, or an empty text if it can't be read.
    [[nodiscard]] static std::string hostRead(const std::filesystem::path& file)
    {
        std::ostringstream content;
        content << std::ifstream(file, std::ios::binary).rdbuf();
        return content.str();
    }
    // Returns every entry below the folder: files with their content, and others with their kind. Files of the device's
    // own state ("device.*") have no content here.
    [[nodiscard]] static std::map<std::string, std::string> treeOf(const std::filesystem::path& folder)
    {
        std::map<std::string, std::string> tree;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
            const auto kind = entry.symlink_status().type();
            std::string& content = tree[entry.path().lexically_relative(folder)];
            if (kind != std::filesystem::file_type::regular)
                content = kind == std::filesystem::file_type::directory ? "" : "neither a file nor a folder";
            else if (!entry.path().filename().string().starts_with("device."))
                content = hostRead(entry);
        }
        return tree;
    }

private:
    std::filesystem::path base_;
};
