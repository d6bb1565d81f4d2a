#include "script.h"

#include "text/host_name.h"

#include "ce/dialog.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <optional>
#include <string_view>

namespace platform::headless {

namespace {

constexpr std::string_view Blanks = " \t";

enum class Argument { Id, Text, Answer, Key, Image };

struct Syntax {
    std::string_view word;
    Verb verb;
    std::vector<Argument> arguments;
    std::string_view example;
};

const std::vector<Syntax>& syntaxes()
{
    using enum Argument;
    static const std::vector<Syntax> all = {
        {"command", Verb::Command, {Id}, "command 40003"},
        {"wait", Verb::Wait, {Text}, "wait \"Select\""},
        {"check", Verb::Check, {Id}, "check 1005"},
        {"uncheck", Verb::Uncheck, {Id}, "uncheck 1005"},
        {"type", Verb::Type, {Id, Text}, "type 1004 \"text\""},
        {"clear", Verb::Clear, {Id}, "clear 1004"},
        {"select", Verb::Select, {Id, Text}, "select 1003 \"Main device\""},
        {"press", Verb::Press, {Id}, "press 1017"},
        {"ok", Verb::Ok, {}, "ok"},
        {"cancel", Verb::Cancel, {}, "cancel"},
        {"close", Verb::Close, {}, "close"},
        {"yes", Verb::Yes, {}, "yes"},
        {"no", Verb::No, {}, "no"},
        {"answer", Verb::Answer, {Text, Answer}, "answer \"Override*\" no"},
        {"key", Verb::Key, {Key}, "key \"Down\""},
        {"expand", Verb::Expand, {Text}, "expand \"Files\\Docs\""},
        {"collapse", Verb::Collapse, {Text}, "collapse \"Files\\Docs\""},
        {"click", Verb::Click, {Text}, "click \"Files\\a.txt\""},
        {"doubleclick", Verb::DoubleClick, {Text}, "doubleclick \"Files\\Docs\""},
        {"date", Verb::Date, {Id, Text}, "date 1024 \"2026-11-24\""},
        {"expect image", Verb::ExpectImage, {Text, Image}, "expect image \"Files\\a.txt\" 7"},
        {"expect text", Verb::ExpectText, {Text}, "expect text \"No item*\""},
        {"expect", Verb::Expect, {Id, Text}, "expect 1002 \"File: *\""},
        {"print text", Verb::PrintText, {}, "print text"},
        {"print tree", Verb::PrintTree, {}, "print tree"},
        {"print", Verb::Print, {Id}, "print 1006"},
        {"idle", Verb::Idle, {}, "idle"},
    };
    return all;
}

struct Token {
    std::string text;
    bool quoted = false;
};

struct Line {
    std::vector<Token> tokens;
    std::size_t end = 0;  // where the last token ends
    std::string error;
};

// Splits a line at its blanks, up to a comment. A text in double quotes is one token. A quote inside that text is
// written twice.
Line split(std::string_view line)
{
    Line result;
    std::size_t at = line.find_first_not_of(Blanks);
    while (at < line.size() && line[at] != '#') {
        Token token;
        if (line[at] == '"') {
            token.quoted = true;
            for (++at;; ++at) {
                const std::size_t quote = line.find('"', at);
                if (quote == std::string_view::npos) {
                    result.error = "a text has no closing quote";
                    return result;
                }
                token.text += line.substr(at, quote - at);
                at = quote + 1;
                if (at >= line.size() || line[at] != '"')
                    break;
                token.text += '"';
            }
            if (at < line.size() && Blanks.find(line[at]) == std::string_view::npos && line[at] != '#') {
                result.error = "after a text's closing quote comes a blank (a quote inside is doubled)";
                return result;
            }
        } else {
            const std::size_t end = std::min(line.find_first_of(" \t#\"", at), line.size());
            token.text = line.substr(at, end - at);
            at = end;
        }
        result.end = at;
        result.tokens.push_back(std::move(token));
        at = std::min(line.find_first_not_of(Blanks, at), line.size());
    }
    return result;
}

std::optional<int> parseNumber(std::string_view word, int lowest)
{
    int number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || end != word.data() + word.size() || number < lowest || number > 0xFFFE)
        return std::nullopt;
    return number;
}

std::optional<int> parseAnswer(std::string_view word)
{
    constexpr std::pair<std::string_view, int> answers[] = {
        {"ok", IDOK},         {"cancel", IDCANCEL}, {"abort", IDABORT}, {"retry", IDRETRY},
        {"ignore", IDIGNORE}, {"yes", IDYES},       {"no", IDNO},
    };
    for (const auto& [name, id] : answers) {
        if (name == word)
            return id;
    }
    return std::nullopt;
}

// Reads a key such as "Ctrl+Shift+End": modifiers and then the name of a key, a letter or a digit.
std::optional<KeyStroke> parseKey(std::string_view name)
{
    constexpr std::pair<std::string_view, bool KeyStroke::*> modifiers[] = {
        {"Ctrl+", &KeyStroke::control}, {"Shift+", &KeyStroke::shift}, {"Alt+", &KeyStroke::alt}};
    constexpr std::pair<std::string_view, WORD> keys[] = {
        {"Enter", VK_RETURN}, {"Esc", VK_ESCAPE},    {"Tab", VK_TAB},        {"Space", VK_SPACE},   {"Up", VK_UP},
        {"Down", VK_DOWN},    {"Left", VK_LEFT},     {"Right", VK_RIGHT},    {"Home", VK_HOME},     {"End", VK_END},
        {"PageUp", VK_PRIOR}, {"PageDown", VK_NEXT}, {"Backspace", VK_BACK}, {"Delete", VK_DELETE}, {"F4", VK_F4},
        {"+", VK_ADD},        {"-", VK_SUBTRACT},    {"*", VK_MULTIPLY},
    };
    KeyStroke stroke;
    for (bool again = true; again;) {
        again = false;
        for (const auto& [prefix, flag] : modifiers) {
            if (name.starts_with(prefix)) {
                stroke.*flag = true;
                name.remove_prefix(prefix.size());
                again = true;
            }
        }
    }
    for (const auto& [keyName, virtualKey] : keys) {
        if (keyName == name)
            stroke.virtualKey = virtualKey;
    }
    if (name.size() == 1) {
        const auto letter = static_cast<unsigned char>(name[0]);
        if (letter >= 'a' && letter <= 'z')
            stroke.virtualKey = static_cast<WORD>(letter - 'a' + 'A');
        else if ((letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9'))
            stroke.virtualKey = static_cast<WORD>(letter);
    }
    return stroke.virtualKey ? std::optional(stroke) : std::nullopt;
}

// Sets one argument of the action. Returns an error message, or an empty text.
std::string takeArgument(Argument kind, const Token& token, Action& action)
{
    if (kind == Argument::Text || kind == Argument::Key) {
        if (!token.quoted)
            return "\"" + token.text + "\" has to stand in double quotes";
        action.text = text::fromUtf8(token.text);
    }
    if (kind == Argument::Id) {
        const std::optional<int> id = token.quoted ? std::nullopt : parseNumber(token.text, 1);
        if (!id)
            return "\"" + token.text + "\" is no id (a number from 1 to 65534)";
        action.id = *id;
    }
    if (kind == Argument::Image) {
        const std::optional<int> image = token.quoted ? std::nullopt : parseNumber(token.text, 0);
        if (!image)
            return "\"" + token.text + "\" is no image (a number from 0 on)";
        action.id = *image;
    }
    if (kind == Argument::Answer) {
        const std::optional<int> answer = token.quoted ? std::nullopt : parseAnswer(token.text);
        if (!answer)
            return "\"" + token.text + "\" is no answer (ok, cancel, yes, no, abort, retry or ignore)";
        action.answer = *answer;
    }
    if (kind == Argument::Key) {
        const std::optional<KeyStroke> key = parseKey(token.text);
        if (!key)
            return "the key \"" + token.text + "\" is not known";
        action.key = *key;
    }
    return {};
}

// Finds the syntax whose name is the first word or the first two words of the line. Returns the syntax and the number
// of words in its name, or null and 0 if no syntax fits.
std::pair<const Syntax*, std::size_t> findSyntax(const std::vector<Token>& tokens)
{
    for (const Syntax& syntax : syntaxes()) {
        std::string words = tokens[0].text;
        std::size_t used = 1;
        if (syntax.word.find(' ') != std::string_view::npos && tokens.size() > 1 && !tokens[1].quoted) {
            words += ' ' + tokens[1].text;
            used = 2;
        }
        if (!tokens[0].quoted && words == syntax.word)
            return {&syntax, used};
    }
    return {nullptr, 0};
}

// Returns an error message, or an empty text.
std::string parseLine(const std::vector<Token>& tokens, Action& action)
{
    const auto [syntax, used] = findSyntax(tokens);
    if (!syntax)
        return "\"" + tokens[0].text + "\" is not known";
    action.verb = syntax->verb;
    if (tokens.size() - used != syntax->arguments.size())
        return "it should look like: " + std::string(syntax->example);
    for (std::size_t i = 0; i < syntax->arguments.size(); ++i) {
        if (std::string error = takeArgument(syntax->arguments[i], tokens[used + i], action); !error.empty())
            return error + "; it should look like: " + std::string(syntax->example);
    }
    return {};
}

}  // namespace

Script parseScript(std::istream& in)
{
    Script script;
    std::string text;
    for (int number = 1; std::getline(in, text); ++number) {
        std::string_view line = text;
        if (number == 1 && line.starts_with("\xEF\xBB\xBF"))
            line.remove_prefix(3);
        if (line.ends_with('\r'))
            line.remove_suffix(1);

        Action action;
        action.line = number;
        Line parts = split(line);
        std::string error = parts.error;
        if (error.empty() && parts.tokens.empty())
            continue;
        if (error.empty())
            error = parseLine(parts.tokens, action);
        if (!error.empty()) {
            script.error = "line " + std::to_string(number) + ": " + error;
            return script;
        }
        const std::size_t begin = line.find_first_not_of(Blanks);
        action.words = line.substr(begin, parts.end - begin);
        script.actions.push_back(std::move(action));
    }
    if (in.bad())
        script.error = "the script can't be read";
    return script;
}

}  // namespace platform::headless
