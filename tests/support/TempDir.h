// A directory that goes with its owner.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

class TempDir {
public:
    TempDir()
    {
        std::string pattern = testing::TempDir() + "vkmibh-XXXXXX";
        m_path = mkdtemp(pattern.data());
    }
    ~TempDir()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempDir(const TempDir&) = delete;
    TempDir& operator=(const TempDir&) = delete;

    std::string File(const std::string& name) const { return m_path + "/" + name; }
    const std::string& Path() const { return m_path; }

private:
    std::string m_path;
};

inline std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

inline void WriteFile(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}
