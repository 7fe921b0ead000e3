// Columns of text, aligned.
#pragma once

#include <string>
#include <vector>

namespace cli {

// Characters of UTF-8 text, which is how wide it is printed for the scripts used here.
std::size_t widthOf(const std::string& text);

// The text with blanks after it up to the width.
std::string padded(std::string text, std::size_t width);

// Rows of equally many cells; two blanks between columns, none at the end of a line.
std::string tableOf(const std::vector<std::vector<std::string>>& rows);

} // namespace cli
