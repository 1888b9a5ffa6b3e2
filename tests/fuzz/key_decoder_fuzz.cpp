// Any bytes from a terminal; FFh stands for a pause.

#include "frame/terminal/key_decoder.h"
#include "tests/fuzz/target.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    KeyDecoder decoder;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] == 0xFF) {
            decoder.expire();
        } else {
            decoder.feed(data[i]);
        }
        require(decoder.keys.size() <= i + 1); // a byte is a key at most
    }
    // What is open is torn at first; a torn character may leave a byte that opens a text.
    constexpr int longest_way_to_ground = 3;
    for (int pause = 0; pause < longest_way_to_ground; ++pause)
        decoder.expire();
    require(!decoder.is_open());
    for (const int key : decoder.keys)
        require(key >= 0 && key < 512);
    // Whatever came before, then a letter is that letter.
    decoder.keys.clear();
    decoder.feed('a');
    require(decoder.keys.size() == 1 && decoder.keys.front() == 'a');
    return 0;
}
