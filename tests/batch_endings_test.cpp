// How runs over archives end: with their input, by signals, for want of room, readers or threads.
#include "batch_runs.hpp"

#include <algorithm>

namespace
{

TEST_F(Batch, SaysThatTheOutputIsFull)
{
    std::string archive;
    for (int i = 0; i < 5000; ++i)
        archive += "{\"amount\": 5}\n";
    const result made = run({"--jobs=2"}, archive, "/dev/full");
    EXPECT_EQ(made.end.status, 1);
    EXPECT_EQ(made.err, "qelrcpt: standard output: No space left on device\n");
}

TEST_F(BatchAtWork, GivesEveryLineAtOnceAndEndsQuietlyWithItsReader)
{
    begin(money_only);
    for (uint64_t line = 1; line <= 3; ++line) {
        in_.ours.write("{\"amount\": 5}\n");
        EXPECT_EQ(out_.ours.read("\n"), money_line(line));
    }
    out_.ours.close();
    while (in_.ours.write("{\"amount\": 5}\n")) {
    }
    EXPECT_EQ(wait_for(child_).status, -SIGPIPE);
    EXPECT_EQ(err_.ours.read(), "");
}

class BatchInterrupted : public BatchAtWork, public testing::WithParamInterface<int>
{
};

TEST_P(BatchInterrupted, WritesWholeLinesAndEndsByTheSignal)
{
    begin(money_only);
    in_.ours.write("{\"amount\": 5}\n{\"amount\": 5}\n{\"amount\"");
    std::string text = out_.ours.read(money_line(2));
    kill(child_, GetParam());
    text += out_.ours.read();
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    EXPECT_EQ(text, money_line(1) + money_line(2));
    EXPECT_EQ(err_.ours.read(), "");
}

TEST_P(BatchInterrupted, FinishesWhatASlowReaderStillTakes)
{
    begin({});
    std::jthread feeding([&] { // until nobody reads
        while (in_.ours.write("{\"amount\": 5, \"ordernum\": \"A-1\"}\n")) {
        }
    });
    std::string text = out_.ours.read("\n");
    kill(child_, GetParam());
    text += out_.ours.read();
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    const auto lines = lines_of(text);
    for (size_t i = 0; i < lines.size(); ++i)
        ASSERT_EQ(lines[i]["line"], i + 1);
}

TEST_P(BatchInterrupted, KeepsTheOldOutputFile)
{
    const std::string file = write("out", "old");
    begin({"-o", file});
    in_.ours.write("{\"amount\": 5}\n");
    while (!has_open(child_, directory_))
        std::this_thread::yield();
    kill(child_, GetParam());
    EXPECT_EQ(out_.ours.read(), "");
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    EXPECT_EQ(read_file(file), "old");
    EXPECT_EQ(files_in(directory_), 1) << "a file is left over";
}

// A signal within a line that is too long: nothing of it is left but the error.
TEST_P(BatchInterrupted, EndsWithinALineThatIsTooLong)
{
    begin(money_only);
    in_.ours.write(std::string(size_t{17} << 20, 'x'));
    kill(child_, GetParam());
    const auto lines = lines_of(out_.ours.read());
    EXPECT_EQ(wait_for(child_).status, -GetParam());
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(has(lines[0]["error"], "longer than 16 MiB")) << lines[0];
}

// As nohup wants it.
TEST_F(BatchAtWork, GoesOnAfterASignalThatIsIgnored)
{
    const auto before = std::signal(SIGHUP, SIG_IGN);
    begin(money_only);
    std::signal(SIGHUP, before);
    in_.ours.write("{\"amount\": 5}\n");
    EXPECT_EQ(out_.ours.read("\n"), money_line(1));
    kill(child_, SIGHUP);
    in_.ours.write("{\"amount\": 5}\n");
    in_.ours.close();
    EXPECT_EQ(out_.ours.read(), money_line(2));
    EXPECT_EQ(wait_for(child_).status, 0);
}

INSTANTIATE_TEST_SUITE_P(Signals, BatchInterrupted, testing::Values(SIGINT, SIGTERM, SIGHUP));

} // namespace
