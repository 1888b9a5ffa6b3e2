// Runs a fuzz target where libFuzzer is not at hand: seed files, and so many random changes of
// them.
//   mutate COUNT SEED-FILE...

#include "tests/fuzz/target.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

namespace
{

void run(const std::string& input)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(input.data()), input.size());
}

void change(std::string& input, std::mt19937& random)
{
    const auto below = [&random](std::size_t limit) { return limit == 0 ? 0 : random() % limit; };
    const std::size_t at = below(input.size());
    switch (below(4)) {
    case 0:
        input[at] = static_cast<char>(random());
        break;
    case 1:
        input.erase(at, below(40));
        break;
    case 2: // a piece of it once more, elsewhere
        input.insert(below(input.size()), input.substr(at, below(200)));
        break;
    default:
        input.insert(at, 1, "\r\n[]=;,\\x\0-.YN\033@*_ 0h"[below(21)]);
        break;
    }
    if (input.empty())
        input = "\n";
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> seeds;
    for (int i = 2; i < argc; ++i) {
        std::ifstream file{argv[i], std::ios::binary};
        seeds.emplace_back(std::istreambuf_iterator<char>{file}, std::istreambuf_iterator<char>{});
        if (seeds.back().empty()) {
            std::fprintf(stderr, "cannot read %s\n", argv[i]);
            return EXIT_FAILURE;
        }
        run(seeds.back());
    }
    if (seeds.empty())
        return EXIT_FAILURE;
    std::mt19937 random{1}; // the same inputs in every run
    for (long count = std::strtol(argv[1], nullptr, 10); count > 0; --count) {
        std::string input = seeds[random() % seeds.size()];
        for (auto changes = 1 + random() % 8; changes > 0; --changes)
            change(input, random);
        run(input);
    }
    return EXIT_SUCCESS;
}
