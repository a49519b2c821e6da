#include "filters/list_lines.h"

#include "base/failure_report.h"
#include "base/number_text.h"
#include "base/utf8.h"
#include "system/code_page.h"

#include <array>
#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

namespace quillmere {

namespace {

constexpr std::string_view itemKind = "item";
constexpr std::string_view rectangleKind = "rectangle";
constexpr std::size_t itemFields = 3;
constexpr std::size_t rectangleFields = 6;

using Fields = std::vector<std::string>;

Fields Split(std::string_view line) {
    while (line.ends_with('\t'))
        line.remove_suffix(1);
    Fields fields;
    for (;;) {
        const std::size_t tab = line.find('\t');
        fields.emplace_back(line.substr(0, tab));
        if (tab == std::string_view::npos) return fields;
        line.remove_prefix(tab + 1);
    }
}

std::string Join(const Fields& fields) {
    std::string line;
    for (const std::string& field : fields)
        line += (line.empty() ? "" : "\t") + field;
    return line;
}

/// Empty when a list file can hold the text.
std::string_view ProblemOfText(const std::string& text) {
    for (std::string_view rest = text; !rest.empty();) {
        const auto character = TakeCharacter(rest);
        if (!character) return "it is not valid UTF-8; save the lines in that encoding";
        if (IsControl(*character)) return "it holds a control character";
    }
    if (Utf8FromCodePage(CodePageFromUtf8(text)) != text)
        return "a character is not in the code page that lists are written in";
    return {};
}

std::string_view ProblemOfName(std::string_view name) {
    if (name.empty()) return "the name is empty";
    if (name.starts_with('<')) return "the name begins with <, which a list cannot hold";
    return {};
}

ListLine ItemFrom(const Fields& fields) {
    const std::string& code = fields[2];
    if (code.empty()) return LineProblem{"the code is empty"};
    if (code.find(' ') != std::string::npos)
        return LineProblem{"the code has a space, so no block can have it"};
    return ItemFilter{CodePageFromUtf8(fields[1]), CodePageFromUtf8(code)};
}

ListLine RectangleFrom(const Fields& fields) {
    std::array<std::int32_t, 4> corners{};
    for (std::size_t i = 0; i < corners.size(); ++i) {
        const std::string& text = fields[i + 2];
        const auto failure = TrapFailure([&] { corners[i] = NumberFromText(text); });
        if (failure && failure->Kind() == FailureKind::Overflow)
            return LineProblem{"a coordinate has more than 32 bits"};
        if (failure || text.find('.') != std::string::npos)
            return LineProblem{"a coordinate is not a whole number"};
    }
    const auto [x1, y1, x2, y2] = corners;
    if (x1 > x2 || y1 > y2) return LineProblem{"X1 > X2 or Y1 > Y2; swap the two"};
    return RectangleFilter{CodePageFromUtf8(fields[1]), x1, y1, x2, y2};
}

ListLine EntryFrom(Fields fields) {
    for (const std::string& field : fields) {
        if (const std::string_view problem = ProblemOfText(field); !problem.empty())
            return LineProblem{problem};
    }
    const bool isItem = fields[0] == itemKind;
    if (!isItem && fields[0] != rectangleKind)
        return LineProblem{"the first field is neither item nor rectangle"};
    const std::size_t count = isItem ? itemFields : rectangleFields;
    if (fields.size() > count || (!isItem && fields.size() < count)) {
        return LineProblem{isItem ? "an item has 3 fields with tabs between them: item, NAME and CODE"
                                  : "a rectangle has 6 fields with tabs between them: rectangle, NAME, X1, "
                                    "Y1, X2 and Y2"};
    }
    fields.resize(count);
    if (const std::string_view problem = ProblemOfName(fields[1]); !problem.empty())
        return LineProblem{problem};
    return isItem ? ItemFrom(fields) : RectangleFrom(fields);
}

template <class Entry>
std::variant<std::string, LineProblem> LineFrom(const Entry& entry, const Fields& fields) {
    const ListLine back = EntryFrom(fields);
    if (const auto* const problem = std::get_if<LineProblem>(&back)) return *problem;
    if (std::get<Entry>(back) != entry) return LineProblem{"a character of it cannot be shown"};
    return Join(fields);
}

template <class Table>
bool AddTo(Table& table, const typename Table::value_type& entry) {
    const std::size_t count = table.EntryCount();
    if (count == table.size()) return false;
    table[count] = entry;
    return true;
}

}  // namespace

ListLine EntryFromLine(std::string_view line) {
    return EntryFrom(Split(line));
}

std::variant<std::string, LineProblem> LineFromEntry(const ItemFilter& item) {
    return LineFrom(item, {std::string(itemKind), Utf8FromCodePage(item.name), Utf8FromCodePage(item.code)});
}

std::variant<std::string, LineProblem> LineFromEntry(const RectangleFilter& rectangle) {
    Fields fields = {std::string(rectangleKind), Utf8FromCodePage(rectangle.name)};
    for (const std::int32_t corner : {rectangle.X1, rectangle.Y1, rectangle.X2, rectangle.Y2})
        fields.push_back(std::to_string(corner));
    return LineFrom(rectangle, fields);
}

bool AddEntry(FilterSet& filters, const ItemFilter& item) {
    return AddTo(filters.arrItems, item);
}

bool AddEntry(FilterSet& filters, const RectangleFilter& rectangle) {
    return AddTo(filters.arrRectangles, rectangle);
}

}  // namespace quillmere
