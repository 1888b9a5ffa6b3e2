// Random sessions: the terminal shows what the console's model holds.
#include "tests/support/console_session.h"

#include <gtest/gtest.h>
#include <random>

TEST(ConsoleModel, IsWhatATerminalShows)
{
    constexpr unsigned sessions = 2000;
    constexpr int steps = 60;
    for (unsigned seed = 1; seed <= sessions; ++seed) {
        std::mt19937 random{seed};
        RandomSession session{[&random](int from, int to) {
            return std::uniform_int_distribution<int>{from, to}(random);
        }};
        for (int step = 0; step < steps; ++step)
            ASSERT_TRUE(session.step()) << "session " << seed << ":\n" << session.log();
    }
}
