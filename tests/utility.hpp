// What tests of any kind need.
#ifndef QELRCPT_TESTS_UTILITY_HPP
#define QELRCPT_TESTS_UTILITY_HPP

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>

namespace fs = std::filesystem;

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool is_sanitized = true;
#elif defined(__has_feature)
constexpr bool is_sanitized = __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
constexpr bool is_sanitized = false;
#endif

inline std::string read_file(const fs::path &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return std::move(text).str();
}

inline bool has(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

// A test with a folder of its own for its files.
class FolderTest : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "qelrcpt_test.XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory_ = name;
    }

    void TearDown() override { fs::remove_all(directory_); }

    // A file with this content; messages show the path that this returns.
    std::string write(const std::string &name, const std::string &content) const
    {
        std::ofstream(directory_ / name, std::ios::binary) << content;
        return (directory_ / name).string();
    }

    fs::path directory_;
};

#endif
