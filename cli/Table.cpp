// Columns as wide as their widest cell.
#include "cli/Table.h"

#include <algorithm>

namespace cli {

std::size_t widthOf(const std::string& text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](unsigned char c) { return (c & 0xc0) != 0x80; }));
}

std::string padded(std::string text, std::size_t width)
{
    const std::size_t present = widthOf(text);
    if (present < width)
        text.append(width - present, ' ');
    return text;
}

std::string tableOf(const std::vector<std::vector<std::string>>& rows)
{
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], widthOf(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line += padded(row[i], widths[i] + 2);
        line.erase(line.find_last_not_of(' ') + 1);
        text += line + '\n';
    }
    return text;
}

} // namespace cli
