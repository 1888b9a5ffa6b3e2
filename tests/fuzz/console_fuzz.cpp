// Any bytes as the choices of a session on the console: the terminal shows what the model holds.

#include "tests/fuzz/target.h"
#include "tests/support/console_session.h"

#include <cstdio>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::size_t used = 0;
    RandomSession session{[&](int from, int to) {
        const int choice = used < size ? data[used] : 0;
        ++used;
        return from + choice % (to - from + 1);
    }};
    constexpr int most_steps = 200;
    for (int step = 0; step < most_steps && used < size; ++step) {
        if (!session.step()) {
            std::fprintf(stderr, "%s", session.log().c_str());
            std::abort();
        }
    }
    return 0;
}
