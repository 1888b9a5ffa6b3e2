// Any bytes as a recording: each row of the table stands in it, and nothing is counted that is not
// there; a second reading gives the same.

#include "companion/log/statistics.h"
#include "tests/fuzz/target.h"
#include "tests/support/temporary_file.h"

#include <algorithm>
#include <string>

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const TemporaryFile file;
    const std::string bytes{as_text(data, size)};
    write_file(file.name(), bytes);
    bool has_complained = false;
    const companion::Surroundings outside{.out = [](std::string_view) { return true; },
                                          .err =
                                              [&](std::string_view) {
                                                  has_complained = true;
                                                  return true;
                                              },
                                          .colored = false,
                                          .today = ""};
    companion::LogReader reader;
    if (!reader.open(file.name(), outside)) {
        require(has_complained);
        return 0;
    }
    const companion::LogStatistics first = companion::read_statistics(reader);
    require(first.rows <= static_cast<std::uint64_t>(std::count(bytes.begin(), bytes.end(), '\n')));
    for (const companion::Statistics& quantity : first.quantities) {
        require(quantity.count() + quantity.not_finite() <= first.rows);
        require(quantity.count() == 0 || quantity.smallest() <= quantity.largest());
        require(quantity.intervals().gaps() <= quantity.count());
    }
    const bool was_whole = reader.end().has_trailer;
    reader.rewind();
    const companion::LogStatistics second = companion::read_statistics(reader);
    require(second.rows == first.rows && reader.end().has_trailer == was_whole);
    require(reader.clock().text_after(first.first_ms).size() >= 29);
    return 0;
}
