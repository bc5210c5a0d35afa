#include "manual/manual_pages.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <sstream>
#include <string_view>
#include <vector>

namespace permora::manual {
namespace {

std::vector<std::string> LinesOf(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    return lines;
}

// Text that means itself, unless it begins a line with a full stop.
std::string Escaped(std::string_view text) {
    static constexpr std::string_view kSpecial = "\\-'`^~\"";
    static constexpr std::array<const char*, kSpecial.size()> kNames = {"\\e",   "\\-",   "\\(aq", "\\(ga",
                                                                        "\\(ha", "\\(ti", "\\(dq"};
    std::string escaped;
    for (const char letter : text) {
        const std::size_t place = kSpecial.find(letter);
        escaped += place == kSpecial.npos ? std::string(1, letter) : kNames.at(place);
    }
    return escaped;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Italic(std::string_view text) {
    return "\\fI" + Escaped(text) + "\\fR";
}

// The words of a paragraph, in lines of the usual length. None begins with a control character.
std::string Lines(const std::string& paragraph) {
    constexpr std::size_t kLength = 78;
    std::string text;
    std::string line;
    std::istringstream words(paragraph);
    for (std::string word; words >> word;) {
        if (!line.empty() && line.size() + word.size() >= kLength) {
            text += line + '\n';
            line.clear();
        }
        if (line.empty() && word.starts_with('.')) line = "\\&";
        line += (line.empty() || line == "\\&" ? "" : " ") + word;
    }
    return text + line + '\n';
}

// A paragraph of whole sentences, in which the names of options stand out.
std::string Prose(std::string paragraph) {
    if (paragraph.empty()) return paragraph;
    paragraph.front() = static_cast<char>(std::toupper(static_cast<unsigned char>(paragraph.front())));
    if (std::string_view(".:!?").find(paragraph.back()) == std::string_view::npos) paragraph += '.';
    const auto isPart = [](char letter) {
        return letter == '-' || std::isalnum(static_cast<unsigned char>(letter));
    };
    std::string prose;
    for (std::size_t at = 0; at < paragraph.size();) {
        std::size_t end = at;
        while (end < paragraph.size() && isPart(paragraph[end]))
            ++end;
        const std::string word = paragraph.substr(at, end == at ? 1 : end - at);
        prose += word.starts_with("--") ? Bold(word) : Escaped(word);
        at += word.size();
    }
    return Lines(prose);
}

// The names joined, each standing out.
std::string Listed(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + (name.starts_with('-') ? Bold(name) : Italic(name));
    return list;
}

std::string Verbatim(const std::vector<std::string>& lines) {
    std::string text = ".nf\n";
    for (const std::string& line : lines)
        text += (line.starts_with('.') ? "\\&" : "") + Escaped(line) + '\n';
    return text + ".fi\n";
}

// A description, whose lines that begin with blanks are a list.
std::string Described(const std::string& description) {
    std::string page;
    std::string paragraph;
    std::vector<std::string> list;
    const auto endParagraph = [&] {
        page += Prose(paragraph);
        paragraph.clear();
    };
    const auto endList = [&] {
        if (!list.empty()) page += ".RS 11\n" + Verbatim(list) + ".RE\n";
        list.clear();
    };
    for (const std::string& line : LinesOf(description)) {
        if (line.starts_with("  ")) {
            endParagraph();
            list.push_back(line.substr(2));
        } else {
            endList();
            paragraph += (paragraph.empty() ? "" : " ") + line;
        }
    }
    endParagraph();
    endList();
    return page;
}

std::string Item(const std::string& term, const std::string& body) {
    return ".TP\n" + term + '\n' + body;
}

std::string ValueText(const OptionFacts& option) {
    return Italic(option.value) + (option.takesMany && option.isGreedy ? "..." : "");
}

std::string OptionItem(const OptionFacts& option, bool isArgument) {
    std::string term;
    if (isArgument) {
        term = ValueText(option);
    } else {
        term = Listed(option.names);
        if (!option.value.empty()) term += ' ' + ValueText(option);
    }
    std::string conditions;
    if (option.isRequired) conditions += "Required. ";
    if (!option.choice.empty()) conditions += "One of " + Listed(option.choice) + " is required. ";
    if (!option.needs.empty()) conditions += "Only with " + Listed(option.needs) + ". ";
    if (!option.excludes.empty()) conditions += "Not with " + Listed(option.excludes) + ". ";
    std::string body = Described(option.description);
    if (!conditions.empty()) body = Lines(conditions) + body;
    return Item(term, body);
}

std::string OptionItems(const CommandFacts& command) {
    std::string items;
    for (const OptionFacts& argument : command.arguments)
        items += OptionItem(argument, true);
    for (const OptionFacts& option : command.options)
        items += OptionItem(option, false);
    return items;
}

std::string Synopsis(const std::string& program, const CommandFacts& command) {
    std::string line = Bold(program + (command.name.empty() ? "" : ' ' + command.name));
    line += " [" + Italic("OPTION") + "...]";
    for (const OptionFacts& option : command.options)
        if (option.isRequired) line += ' ' + Bold(option.names.back()) + ' ' + Italic(option.value);
    for (const OptionFacts& argument : command.arguments)
        line += ' ' + (argument.isRequired ? ValueText(argument) : '[' + ValueText(argument) + ']');
    return Lines(line);
}

std::string Synopses(const std::string& program, const CommandFacts& command) {
    std::string text = Synopsis(program, command);
    for (const CommandFacts& inner : command.commands)
        text += ".br\n" + Synopses(program, inner);
    return text;
}

// The end of a program's help: notes, and lists under headings.
struct Footer {
    std::string notes;  // with a line break at the end of each paragraph
    std::vector<std::string> examples;
    std::vector<std::string> exitCodes;
};

Footer ReadFooter(const std::string& text) {
    Footer footer;
    std::vector<std::string>* list = nullptr;
    std::string paragraph;
    for (const std::string& line : LinesOf(text + "\n\n")) {
        if (line == "Examples:") {
            list = &footer.examples;
        } else if (line == "Exit code:") {
            list = &footer.exitCodes;
        } else if (line.starts_with("  ") && list != nullptr) {
            list->push_back(line.substr(2));
        } else if (!line.empty()) {
            paragraph += (paragraph.empty() ? "" : " ") + line;
        } else if (!paragraph.empty()) {
            footer.notes += paragraph + '\n';
            paragraph.clear();
        }
    }
    return footer;
}

// Each line is a code with its meaning, or goes on with the one before.
std::string ExitStatus(const std::vector<std::string>& lines) {
    std::string items;
    std::string code;
    std::string meaning;
    const auto end = [&] {
        if (!code.empty()) items += Item(Bold(code), Prose(meaning));
    };
    for (const std::string& line : lines) {
        if (line.starts_with(' ')) {
            meaning += line.substr(line.find_first_not_of(' ') - 1);
            continue;
        }
        end();
        code = line.substr(0, line.find(' '));
        meaning = line.substr(std::min(line.find_first_not_of(' ', code.size()), line.size()));
    }
    end();
    return items;
}

std::string Section(const std::string& title, const std::string& body) {
    return body.empty() ? body : ".SH " + title + '\n' + body;
}

std::string Head(const PageFrame& frame, const std::string& name, const std::string& summary) {
    std::string title = name;
    std::ranges::transform(title, title.begin(), [](unsigned char letter) { return std::toupper(letter); });
    std::string what = summary;
    what.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(what.front())));
    return ".\\\" Made from the description of the program's arguments.\n.TH " + Escaped(title) + " 1 " +
           frame.date + " \"Permora " + Escaped(frame.version) + "\" \"Permora\"\n.ad l\n.nh\n" +
           Section("NAME", Lines(Escaped(name) + " \\- " + Escaped(what)));
}

std::string Reference(const std::string& page) {
    return ".BR " + Escaped(page) + " (1)";
}

std::string CommandPage(const CommandFacts& command, const PageFrame& frame, const Footer& footer) {
    std::string commands;
    for (const CommandFacts& inner : command.commands)
        commands += ".SS " + Escaped(inner.name) + '\n' + Described(inner.description) + OptionItems(inner);
    std::vector<std::string> examples;
    const std::string start = frame.program + ' ' + command.name;
    for (const std::string& line : footer.examples)
        if (line == start || line.starts_with(start + ' ')) examples.push_back(line);
    return Head(frame, frame.program + '-' + command.name, Summary(command.description)) +
           Section("SYNOPSIS", Synopses(frame.program, command)) +
           Section("DESCRIPTION", Described(command.description)) + Section("OPTIONS", OptionItems(command)) +
           Section("COMMANDS", commands) + Section("EXIT STATUS", ExitStatus(footer.exitCodes)) +
           Section("EXAMPLES", examples.empty() ? "" : Verbatim(examples)) +
           Section("SEE ALSO", Reference(frame.program) + ",\n" + Reference(frame.related) + '\n');
}

std::string ProgramPage(const CommandFacts& program, const PageFrame& frame, const Footer& footer) {
    std::string commands;
    std::string seeAlso;
    for (const CommandFacts& command : program.commands) {
        commands += Item(Bold(command.name), Described(command.description));
        seeAlso += Reference(frame.program + '-' + command.name) + ",\n";
    }
    std::string notes;
    for (const std::string& paragraph : LinesOf(footer.notes))
        notes += ".PP\n" + Prose(paragraph);
    std::string synopsis = Synopsis(frame.program, program);
    if (!commands.empty())
        synopsis = Bold(frame.program) + ' ' + Italic("COMMAND") + " [" + Italic("OPTION") + "...] [" +
                   Italic("ARGUMENT") + "...]\n";
    return Head(frame, frame.program, Summary(program.description)) + Section("SYNOPSIS", synopsis) +
           Section("DESCRIPTION", Described(program.description) + notes) + Section("COMMANDS", commands) +
           Section("OPTIONS", OptionItems(program)) + Section("EXIT STATUS", ExitStatus(footer.exitCodes)) +
           frame.surroundings + Section("EXAMPLES", Verbatim(footer.examples)) +
           Section("SEE ALSO", seeAlso + Reference(frame.related) + '\n');
}

}  // namespace

std::map<std::string, std::string> MakePages(const CommandFacts& program, const PageFrame& frame) {
    const Footer footer = ReadFooter(program.footer);
    std::map<std::string, std::string> pages;
    pages[frame.program + ".1"] = ProgramPage(program, frame, footer);
    for (const CommandFacts& command : program.commands)
        pages[frame.program + '-' + command.name + ".1"] = CommandPage(command, frame, footer);
    return pages;
}

}  // namespace permora::manual
