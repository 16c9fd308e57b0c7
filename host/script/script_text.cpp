// SPDX-License-Identifier: BSD-3-Clause
#include "host/script/script_text.h"

#include <algorithm>
#include <charconv>

namespace velmora::host {

// Blanks that end no command.
static bool is_blank(char ch) {
    return ch == ' ' || ch == '\t' || ch == '\r' || ch == '\v' || ch == '\f';
}

// The character in UTF-8; escapes reach up to U+FFFF.
static std::string utf8(unsigned code) {
    if (code >= 0xd800 && code < 0xe000)
        code = 0xfffd; // a surrogate is no character
    if (code < 0x80)
        return {static_cast<char>(code)};
    if (code < 0x800)
        return {static_cast<char>(0xc0 | code >> 6), static_cast<char>(0x80 | (code & 0x3f))};
    return {static_cast<char>(0xe0 | code >> 12), static_cast<char>(0x80 | (code >> 6 & 0x3f)),
            static_cast<char>(0x80 | (code & 0x3f))};
}

namespace {

// A position in a text, with its line and column, that moves from value to value.
class Scanner {
public:
    enum class Rules { command, list };

    Scanner(std::string_view text, ScriptPlace start, const std::string& name)
        : text(text), place(start), name(name) {}

    // Moves to the next value and returns whether there is one: of a command on the same line, of a
    // list anywhere.
    bool find_value(Rules rules);
    ScriptValue take_value(Rules rules);

    // Moves over blanks, ends of lines and comments; returns whether another command follows.
    bool find_command();

private:
    const std::string_view text;
    std::size_t offset = 0;
    ScriptPlace place;
    const std::string& name;

    bool at_end() const { return offset == text.size(); }
    bool at_line_join() const { return text.substr(offset, 2) == "\\\n"; }
    bool at_end_of_value(Rules rules) const;
    char take();
    void skip_comment();
    std::string take_braced();
    std::string take_quoted();
    std::string take_word(Rules rules);
    void take_brackets(std::string& word);
    std::string take_escape(ScriptPlace backslash);
    unsigned take_digits(std::size_t most, unsigned base);
    [[noreturn]] void fail(ScriptPlace at, const std::string& why) const {
        throw ScriptError(name, at, why);
    }
};

} // namespace

// Takes one character, and counts lines and columns.
char Scanner::take() {
    const char ch = text[offset++];
    if (ch == '\n') {
        place.line++;
        place.column = 1;
    } else {
        place.column++;
    }
    return ch;
}

bool Scanner::at_end_of_value(Rules rules) const {
    if (at_end() || at_line_join())
        return true;
    const char ch = text[offset];
    return is_blank(ch) || ch == '\n' || (rules == Rules::command && ch == ';');
}

bool Scanner::find_value(Rules rules) {
    while (!at_end()) {
        if (at_line_join())
            take();
        else if (!is_blank(text[offset]) && !(rules == Rules::list && text[offset] == '\n'))
            break;
        take();
    }
    return !at_end() && !(rules == Rules::command && at_end_of_value(rules));
}

bool Scanner::find_command() {
    while (!find_value(Rules::command) || text[offset] == '#') {
        if (at_end())
            return false;
        if (text[offset] == '#')
            skip_comment();
        else
            take(); // the end of a line, or a ;
    }
    if (text[offset] == '}')
        fail(place, "the brace was never opened");
    return true;
}

void Scanner::skip_comment() {
    while (!at_end() && text[offset] != '\n')
        if (take() == '\\' && !at_end())
            take(); // a backslash continues a comment on the next line
}

ScriptValue Scanner::take_value(Rules rules) {
    ScriptValue value;
    value.place = place;
    // The first character decides the kind.
    if (text[offset] != '{' && text[offset] != '"') {
        value.text = take_word(rules);
        return value;
    }
    const bool braced = text[offset] == '{';
    value.kind = braced ? ScriptValue::Kind::braced : ScriptValue::Kind::quoted;
    value.text = braced ? take_braced() : take_quoted();
    if (!at_end_of_value(rules))
        fail(place,
             braced ? "text right after a closing brace" : "text right after a closing quote");
    return value;
}

// Up to the matching brace, raw; a backslash hides the character after it.
std::string Scanner::take_braced() {
    const ScriptPlace opened = place;
    take();
    const std::size_t start = offset;
    for (std::size_t depth = 1; !at_end();) {
        const char ch = take();
        if (ch == '\\' && !at_end())
            take();
        else if (ch == '{')
            depth++;
        else if (ch == '}' && --depth == 0)
            return std::string(text.substr(start, offset - 1 - start));
    }
    fail(opened, "the brace is never closed");
}

std::string Scanner::take_quoted() {
    const ScriptPlace opened = place;
    take();
    std::string content;
    while (!at_end()) {
        const ScriptPlace at = place;
        const char ch = take();
        if (ch == '"')
            return content;
        if (ch == '\\')
            content += take_escape(at);
        else
            content += ch;
    }
    fail(opened, "the quote is never closed");
}

std::string Scanner::take_word(Rules rules) {
    std::string word;
    while (!at_end_of_value(rules)) {
        if (rules == Rules::command && text[offset] == '[') {
            take_brackets(word);
            continue;
        }
        const ScriptPlace at = place;
        const char ch = take();
        if (ch == '\\')
            word += take_escape(at);
        else
            word += ch;
    }
    return word;
}

// [...] belongs to the word with all its blanks.
void Scanner::take_brackets(std::string& word) {
    const ScriptPlace opened = place;
    const std::size_t start = offset;
    std::size_t depth = 0;
    while (!at_end()) {
        const char ch = take();
        if (ch == '\\' && !at_end())
            take();
        else if (ch == '[')
            depth++;
        else if (ch == ']' && --depth == 0) {
            word += text.substr(start, offset - start);
            return;
        }
    }
    fail(opened, "the bracket is never closed");
}

// At most `most` digits; 0 if there are none.
unsigned Scanner::take_digits(std::size_t most, unsigned base) {
    const char* const start = text.data() + offset;
    unsigned code = 0;
    const char* const end =
        std::from_chars(start, start + std::min(most, text.size() - offset), code, int(base)).ptr;
    while (text.data() + offset != end)
        take();
    return code;
}

// Takes what follows a backslash; returns the text that the escape means.
std::string Scanner::take_escape(ScriptPlace backslash) {
    static const std::string_view letters = "abfnrtv";
    static const std::string_view meanings = "\a\b\f\n\r\t\v";
    if (at_end())
        return "\\";
    // \n and the like.
    const char ch = text[offset];
    const std::size_t letter = letters.find(ch);
    if (letter != std::string_view::npos) {
        take();
        return {meanings[letter]};
    }
    // A character without meaning stays itself; a line join becomes a blank.
    const bool octal = ch >= '0' && ch <= '7';
    if (ch != 'x' && ch != 'u' && ch != '\n' && !octal)
        return {take()};
    if (ch == '\n') {
        take();
        while (!at_end() && is_blank(text[offset]))
            take();
        return " ";
    }

    // \x41, \u2605, \101.
    if (!octal)
        take();
    const std::size_t digits = offset;
    const unsigned code = octal ? take_digits(3, 8) : take_digits(ch == 'x' ? 2 : 4, 16);
    if (offset == digits)
        return {ch};
    if (code == 0)
        fail(backslash, "a NUL byte cannot be part of a text");
    return utf8(code);
}

static ScriptPlace place_of(std::string_view text, std::size_t offset) {
    ScriptPlace place;
    for (const char ch : text.substr(0, offset)) {
        place.line += ch == '\n';
        place.column = ch == '\n' ? 1 : place.column + 1;
    }
    return place;
}

// The text with LF in place of every CRLF. Lines and columns stay the same.
static std::string with_plain_line_ends(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (const char ch : text) {
        while (ch == '\n' && !plain.empty() && plain.back() == '\r')
            plain.pop_back();
        plain += ch;
    }
    return plain;
}

std::vector<ScriptCommand> commands_of(const std::string& text, const std::string& name) {
    // Check, and skip the byte order mark.
    const std::size_t nul = text.find('\0');
    if (nul != std::string::npos)
        throw ScriptError(name, place_of(text, nul), "a NUL byte cannot be part of a text");
    std::string_view rest = text;
    ScriptPlace start;
    if (rest.substr(0, 3) == "\xef\xbb\xbf") {
        rest.remove_prefix(3);
        start.column += 3;
    }

    // A command is one value or more.
    const std::string plain = with_plain_line_ends(rest);
    Scanner scanner(plain, start, name);
    std::vector<ScriptCommand> commands;
    while (scanner.find_command()) {
        commands.emplace_back();
        do
            commands.back().push_back(scanner.take_value(Scanner::Rules::command));
        while (scanner.find_value(Scanner::Rules::command));
    }
    return commands;
}

std::vector<ScriptValue> list_items(const ScriptValue& value, const std::string& name) {
    if (value.kind != ScriptValue::Kind::braced)
        return {value};
    Scanner scanner(value.text, {value.place.line, value.place.column + 1}, name);
    std::vector<ScriptValue> items;
    while (scanner.find_value(Scanner::Rules::list))
        items.push_back(scanner.take_value(Scanner::Rules::list));
    return items;
}

double number_of(const ScriptValue& value, const std::string& name) {
    double number = 0.0;
    const NumberFault fault = value.kind == ScriptValue::Kind::braced
                                  ? NumberFault::not_a_number
                                  : parse_finite(value.text, number);
    if (fault != NumberFault::none)
        throw ScriptError(name, value.place, in_quotes(value) + " " + reason_of(fault));
    return number;
}

std::string in_quotes(const ScriptValue& value) {
    return in_quotes(value.kind == ScriptValue::Kind::braced ? "{" + value.text + "}" : value.text);
}

} // namespace velmora::host
