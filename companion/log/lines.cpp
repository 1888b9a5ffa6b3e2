#include "companion/log/lines.h"

#include "companion/text.h"
#include "frame/platform/platform.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace companion
{

namespace
{

constexpr std::size_t piece = 1 << 18;

} // namespace

LineSource::~LineSource()
{
    if (file_ != nullptr)
        std::fclose(file_);
}

bool LineSource::open(const std::string& name, const Surroundings& outside)
{
    name_ = name;
    outside_ = &outside;
    std::string bytes;
    if (name == "-") {
        if (!read_whole_file(name, outside, bytes))
            return false;
    } else {
        file_ = platform::open_file(name.c_str(), "rb");
        if (file_ == nullptr) {
            complain();
            return false;
        }
        if (std::fseek(file_, 0, SEEK_SET) == 0) {
            std::setvbuf(file_, nullptr, _IONBF, 0); // ours is the buffer
            buffer_.resize(piece + readable_behind);
            return true;
        }
        const bool is_read = read_to_end(file_, name, outside, bytes);
        std::fclose(std::exchange(file_, nullptr));
        if (!is_read)
            return false;
    }
    buffer_.assign(bytes.begin(), bytes.end());
    end_ = buffer_.size();
    buffer_.resize(end_ + readable_behind);
    return true;
}

void LineSource::complain() const
{
    outside_->complain(valid_utf8(name_) + ": " + std::strerror(errno));
}

bool LineSource::fill()
{
    if (file_ == nullptr || platform::stop_signal() != 0)
        return false;
    std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(start_),
              buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
    end_ -= start_;
    start_ = 0;
    const std::size_t wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(capacity() - end_, most_ - read_));
    const std::size_t count = std::fread(buffer_.data() + end_, 1, wanted, file_);
    if (count == 0 && std::ferror(file_) != 0 && good_) {
        good_ = false;
        complain();
    }
    end_ += count;
    read_ += count;
    return count > 0;
}

bool LineSource::take_line(std::string_view& line)
{
    const char* begin = buffer_.data() + start_;
    const std::size_t length = end_ - start_;
    const char* found =
        length > 0 ? static_cast<const char*>(std::memchr(begin, '\n', length)) : nullptr;
    if (found == nullptr)
        return false;
    line = {begin, static_cast<std::size_t>(found - begin)};
    start_ += line.size() + 1;
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    ++number_;
    return true;
}

LineSource::Got LineSource::next(std::string_view& line)
{
    bool is_overlong = false;
    do {
        if (take_line(line))
            return is_overlong ? Got::overlong : Got::line;
        if (file_ != nullptr && end_ - start_ == capacity()) {
            is_overlong = true;
            start_ = end_;
        }
    } while (fill());
    if ((start_ == end_ && !is_overlong) || platform::stop_signal() != 0)
        return Got::end;
    start_ = end_;
    ++number_;
    return Got::torn;
}

void LineSource::rewind()
{
    number_ = 0;
    start_ = 0;
    if (file_ == nullptr) {
        end_ = capacity();
        return;
    }
    most_ = read_;
    read_ = 0;
    end_ = 0;
    std::rewind(file_);
}

} // namespace companion
