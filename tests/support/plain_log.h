// The log of closed windows read in the plain way, from its beginning, every line of it: what the product's
// reading from the end must come to.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

// Every line, in order, as the scripting runtime's ReadLine gives them until AtEndOfStream.
std::vector<std::string> PlainLines(std::string_view log);

// The rows of a list that each line enters at the top, leaving its former place, and that keeps limit rows.
// textOf: the text that a line becomes; rows are told apart by it.
std::vector<std::string> PlainNewestLines(
    std::string_view log, std::size_t limit,
    const std::function<std::string(const std::string&)>& textOf = [](const std::string& line) {
        return line;
    });

// A log that has more lines than are shown, every third of them equal to an earlier one.
std::string RepeatingLog();
