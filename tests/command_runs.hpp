// The command run to its end, with files of the test.
#ifndef QELRCPT_TESTS_COMMAND_RUNS_HPP
#define QELRCPT_TESTS_COMMAND_RUNS_HPP

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using arguments = std::vector<std::string>;

struct result {
    int status;
    std::string out;
    std::string err;
};

inline std::string read_file(const fs::path &path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

inline bool has(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

class Command : public testing::Test
{
  protected:
    void SetUp() override
    {
        std::string name = (fs::temp_directory_path() / "command_test.XXXXXX").string();
        ASSERT_NE(mkdtemp(name.data()), nullptr);
        directory_ = name;
        fs::create_directory(directory_ / "work");
    }

    void TearDown() override { fs::remove_all(directory_); }

    // A file of this test, given its content; messages show the path that this returns.
    std::string write(const std::string &name, const std::string &content) const
    {
        const fs::path path = directory_ / "work" / name;
        std::ofstream(path, std::ios::binary) << content;
        return path.string();
    }

    result run(arguments args, const std::string &input = "", std::string stdout_path = "") const
    {
        const fs::path in = directory_ / "stdin";
        const fs::path err = directory_ / "stderr";
        std::ofstream(in, std::ios::binary) << input;
        if (stdout_path.empty())
            stdout_path = (directory_ / "stdout").string();
        args.insert(args.begin(), "qelrcpt");
        std::vector<char *> argv;
        for (std::string &arg : args)
            argv.push_back(arg.data());
        argv.push_back(nullptr);

        constexpr int truncate = O_WRONLY | O_CREAT | O_TRUNC;
        posix_spawn_file_actions_t files;
        posix_spawn_file_actions_init(&files);
        posix_spawn_file_actions_addopen(&files, STDIN_FILENO, in.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&files, STDOUT_FILENO, stdout_path.c_str(), truncate,
                                         0600);
        posix_spawn_file_actions_addopen(&files, STDERR_FILENO, err.c_str(), truncate, 0600);
        pid_t child = 0;
        const int failure =
            posix_spawn(&child, QELRCPT_COMMAND, &files, nullptr, argv.data(), environ);
        posix_spawn_file_actions_destroy(&files);
        EXPECT_EQ(failure, 0);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
        const bool is_regular = fs::is_regular_file(stdout_path);
        return {WEXITSTATUS(status), is_regular ? read_file(stdout_path) : "", read_file(err)};
    }

    // The blocks of the one receipt that the arguments and the input give.
    nlohmann::json blocks(arguments args, const std::string &input) const
    {
        args.insert(args.end(), {"--output", "json"});
        const result made = run(args, input);
        EXPECT_EQ(made.status, 0) << made.err;
        return nlohmann::json::parse(made.out);
    }

    fs::path directory_;
};

#endif
