#include "frame/terminal/folding.h"

#include <algorithm>
#include <cstddef>

namespace
{

class Folding
{
public:
    Folding(std::span<const Cell> cells, std::span<const UnbrokenPart> parts)
        : cells_{cells}, parts_{parts}
    {
        end_ = static_cast<int>(cells.size()) + 1;
        while (end_ > 1 && cells[static_cast<std::size_t>(end_) - 2].is_blank())
            --end_;
        for (const UnbrokenPart& part : parts)
            end_ = std::max(end_, part.to);
    }

    /// Column behind the last one in use.
    [[nodiscard]] int end() const { return end_; }

    /// Where the piece behind the one that begins at `start` and has that many columns begins.
    [[nodiscard]] int next_start(int start, int columns) const
    {
        const int limit = start + columns;
        int between_parts = 0;
        int between_words = 0;
        int used_to = start; // column behind the last one in use
        for (int column = start; column < end_ && used_to <= limit; ++column) {
            if (!is_used(column))
                continue;
            if (used_to > start && begins_word(column)) {
                between_words = column;
                if (!is_inside_part(column))
                    between_parts = column;
            }
            used_to = column + 1;
        }
        if (used_to <= limit)
            return end_;
        if (between_parts > 0)
            return whole_character(start, between_parts);
        return whole_character(start, between_words > 0 ? between_words : limit);
    }

private:
    /// Columns of a value count as used whatever it leaves blank.
    [[nodiscard]] bool is_used(int column) const
    {
        const auto index = static_cast<std::size_t>(column) - 1;
        return (index < cells_.size() && !cells_[index].is_blank()) || is_value(column);
    }

    [[nodiscard]] bool is_value(int column) const
    {
        return std::ranges::any_of(parts_, [column](const UnbrokenPart& part) {
            return column >= part.value && column < part.to;
        });
    }

    [[nodiscard]] bool is_inside_part(int column) const
    {
        return std::ranges::any_of(parts_, [column](const UnbrokenPart& part) {
            return column > part.from && column < part.to;
        });
    }

    /// A value that is divided from its label takes a word of it along.
    [[nodiscard]] bool begins_word(int column) const
    {
        const auto is_at = [this, column](int UnbrokenPart::*begin) {
            return std::ranges::find(parts_, column, begin) != parts_.end();
        };
        return is_at(&UnbrokenPart::from) || (!is_used(column - 1) && !is_at(&UnbrokenPart::value));
    }

    /// The column, or one beside it where it is in the middle of a wide character.
    [[nodiscard]] int whole_character(int start, int column) const
    {
        const auto index = static_cast<std::size_t>(column) - 1;
        if (index >= cells_.size() || cells_[index].character != 0)
            return column;
        return column - 1 > start ? column - 1 : column + 1;
    }

    std::span<const Cell> cells_;
    std::span<const UnbrokenPart> parts_;
    int end_;
};

} // namespace

int folded_indent(int columns)
{
    constexpr int indent = 4;
    constexpr int narrow = 40; // below, each column counts
    return columns >= narrow ? indent : 0;
}

std::vector<int> folded_row(std::span<const Cell> cells, std::span<const UnbrokenPart> parts,
                            int columns)
{
    const Folding folding{cells, parts};
    std::vector<int> starts = {1};
    columns = std::max(columns, 1);
    int next = folding.next_start(1, columns);
    while (next < folding.end()) {
        starts.push_back(next);
        next = folding.next_start(next, columns - folded_indent(columns));
    }
    return starts;
}
