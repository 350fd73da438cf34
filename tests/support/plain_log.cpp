#include "tests/support/plain_log.h"

#include <algorithm>

std::vector<std::string> PlainLines(std::string_view log) {
    std::vector<std::string> lines;
    while (!log.empty()) {
        const std::size_t feed = log.find('\n');
        std::string line(log.substr(0, feed));
        if (feed != std::string_view::npos && line.ends_with('\r')) line.pop_back();
        lines.push_back(line);
        log.remove_prefix(feed == std::string_view::npos ? log.size() : feed + 1);
    }
    return lines;
}

std::vector<std::string> PlainNewestLines(std::string_view log, std::size_t limit,
                                          const std::function<std::string(const std::string&)>& textOf) {
    std::vector<std::string> rows;
    for (const std::string& line : PlainLines(log)) {
        const std::string text = textOf(line);
        const auto found = std::find(rows.begin(), rows.end(), text);
        if (found != rows.end()) rows.erase(found);
        rows.insert(rows.begin(), text);
        if (rows.size() > limit) rows.pop_back();
    }
    return rows;
}

std::string RepeatingLog() {
    std::string text;
    for (int i = 0; i < 40; ++i)
        text += "http://site" + std::to_string(i % 3 == 0 ? i / 2 : i) + ".example/page\r\n";
    return text;
}
