#include "platform/hvaudio/measure/calibration.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace hvaudio::measure {

namespace {

constexpr double lowestHz = 1e-3, highestHz = 1e6;
constexpr double farthestDb = 200;
constexpr std::size_t quotedLength = 20;

constexpr std::string_view byteOrderMark = "\xef\xbb\xbf";
constexpr std::string_view blanks = " \t\v\f;";
constexpr std::string_view commentMarks = "*\"#";

struct Line
{
    int number;
    CalibrationPoint point;
};

/// For a sentence: one line of it, whatever the file holds.
std::string quoted(std::string_view text)
{
    std::string shown(text.substr(0, quotedLength));
    std::replace_if(
        shown.begin(), shown.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return '\'' + shown + (text.size() > quotedLength ? "...'" : "'");
}

/// Takes a line off the text.
std::string_view nextLine(std::string_view& text)
{
    const std::size_t end = std::min(text.find_first_of("\r\n"), text.size());
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end);
    text.remove_prefix(std::min<std::size_t>(text.size(), text.substr(0, 2) == "\r\n" ? 2 : 1));
    return line;
}

/// What stands between any of the separators; empty ones don't count.
std::vector<std::string_view> split(std::string_view line, std::string_view separators)
{
    std::vector<std::string_view> words;
    for (;;) {
        const std::size_t start = line.find_first_not_of(separators);
        if (start == std::string_view::npos)
            return words;
        line.remove_prefix(start);
        words.push_back(line.substr(0, line.find_first_of(separators)));
        line.remove_prefix(words.back().size());
    }
}

bool readNumber(std::string_view word, double& number)
{
    if (word.size() > 1 && word[0] == '+' && word[1] != '-')
        word.remove_prefix(1);
    const auto [end, fault] = std::from_chars(word.data(), word.data() + word.size(), number);
    return fault == std::errc() && end == word.data() + word.size() && std::isfinite(number);
}

/// The numbers' words; none where a comma stands within a number, which is then no separator.
std::vector<std::string_view> wordsOf(std::string_view line)
{
    std::vector<std::string_view> words = split(line, blanks);
    if (words.size() == 1)
        return split(words.front(), ",");
    for (std::string_view& word : words) {
        if (word.back() == ',')
            word.remove_suffix(1);
        if (word.empty() || word.find(',') != std::string_view::npos)
            return {};
    }
    return words;
}

/// Empty when the line is a point.
std::string faultOf(std::string_view line, CalibrationPoint& point)
{
    const std::vector<std::string_view> words = wordsOf(line);
    if (words.empty())
        return "there is a comma where a number is due; numbers have a point";
    if (words.size() < 2 || words.size() > 3)
        return "it has " + std::to_string(words.size()) + (words.size() == 1 ? " number" : " numbers") +
               ", not 2 or 3";
    double numbers[3] = {};
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (!readNumber(words[i], numbers[i]))
            return quoted(words[i]) + " is no number";
    }
    point = {numbers[0], numbers[1], numbers[2]};
    if (point.hz < lowestHz || point.hz > highestHz)
        return quoted(words[0]) + " is no frequency of 0.001 to 1000000 Hz";
    if (std::abs(point.db) > farthestDb)
        return quoted(words[1]) + " is no level of -200 to 200 dB";
    return {};
}

} // namespace

std::vector<CalibrationPoint> readCalibration(std::string_view text, std::string& error)
{
    if (text.substr(0, byteOrderMark.size()) == byteOrderMark)
        text.remove_prefix(byteOrderMark.size());
    const auto refusal = [&error](int number, const std::string& why) {
        error = "line " + std::to_string(number) + ": " + why;
        return std::vector<CalibrationPoint>();
    };
    std::vector<Line> lines;
    for (int number = 1; !text.empty(); ++number) {
        std::string_view line = nextLine(text);
        line = line.substr(0, line.find_first_of(commentMarks));
        if (line.find_first_not_of(blanks) == std::string_view::npos)
            continue;
        lines.push_back({number, {}});
        if (const std::string fault = faultOf(line, lines.back().point); !fault.empty())
            return refusal(number, fault);
    }
    if (lines.empty()) {
        error = "there is no line with a frequency and a level";
        return {};
    }
    std::stable_sort(lines.begin(), lines.end(),
                     [](const Line& a, const Line& b) { return a.point.hz < b.point.hz; });
    std::vector<CalibrationPoint> points;
    for (const Line& line : lines) {
        if (!points.empty() && points.back().hz == line.point.hz)
            return refusal(line.number, "its frequency is that of line " +
                                            std::to_string(lines[points.size() - 1].number));
        points.push_back(line.point);
    }
    return points;
}

double levelAt(const std::vector<CalibrationPoint>& points, double hz)
{
    const auto above =
        std::lower_bound(points.begin(), points.end(), hz,
                         [](const CalibrationPoint& p, double wanted) { return p.hz < wanted; });
    if (above == points.end())
        return points.back().db;
    if (above == points.begin())
        return above->db;
    const CalibrationPoint& below = *(above - 1);
    const double part = std::log(hz / below.hz) / std::log(above->hz / below.hz);
    return below.db + part * (above->db - below.db);
}

} // namespace hvaudio::measure
