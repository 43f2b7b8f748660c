// The command run to its end, with files of the test.
#ifndef QELRCPT_TESTS_COMMAND_RUNS_HPP
#define QELRCPT_TESTS_COMMAND_RUNS_HPP

#include "processes.hpp"

#include <nlohmann/json.hpp>

class Command : public FolderTest
{
  protected:
    result run(const arguments &args, const std::string &input = "",
               std::string stdout_path = "") const
    {
        if (stdout_path.empty())
            stdout_path = (directory_ / "stdout").string();
        const std::string err_path = (directory_ / "stderr").string();
        constexpr int anew = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC;
        const descriptor in(open(write("stdin", input).c_str(), O_RDONLY | O_CLOEXEC));
        const descriptor out(open(stdout_path.c_str(), anew, 0600));
        const descriptor err(open(err_path.c_str(), anew, 0600));
        const ending end = wait_for(start(args, in.get(), out.get(), err.get()));
        EXPECT_GE(end.status, 0) << "ended by a signal";
        const bool is_regular = fs::is_regular_file(stdout_path);
        return {end, is_regular ? read_file(stdout_path) : "", read_file(err_path)};
    }

    // The blocks of the one receipt that the arguments and the input give.
    nlohmann::json blocks(arguments args, const std::string &input) const
    {
        args.insert(args.end(), {"--output", "json"});
        const result made = run(args, input);
        EXPECT_EQ(made.status, 0) << made.err;
        return nlohmann::json::parse(made.out);
    }
};

#endif
