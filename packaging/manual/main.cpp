// Writes the manual pages and the shell completion of both programs, from the descriptions of their
// arguments.
//   permora-manual SOURCES TARGET VERSION DATE
// SOURCES is the folder of the templates. In TARGET, which need not exist, each program gets a folder.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>

#include "app/command_line.h"
#include "cli/commands.h"
#include "cli/program.h"
#include "manual/completions.h"
#include "manual/manual_pages.h"

namespace permora::manual {
namespace {

namespace fs = std::filesystem;

std::string Read(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    if (!file) throw std::runtime_error(path.string() + " cannot be read");
    return text.str();
}

void Write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) throw std::runtime_error(path.string() + " cannot be written");
}

std::string Filled(std::string text, const std::map<std::string, std::string>& values) {
    for (const auto& [name, value] : values)
        for (std::size_t at = 0; (at = text.find(name, at)) != text.npos; at += value.size())
            text.replace(at, name.size(), value);
    return text;
}

struct Folders {
    fs::path sources;
    fs::path target;
};

void Describe(CLI::App& parser, const PageFrame& frame, const Folders& folders) {
    const CommandFacts facts = FactsOf(parser);
    const fs::path target = folders.target / frame.program;
    for (const auto& [name, page] : MakePages(facts, frame))
        Write(target / "man1" / name, page);

    std::string function = '_' + frame.program;
    std::ranges::replace(function, '-', '_');
    const auto complete = [&](const char* shell, const std::string& name, const std::string& grammar) {
        Write(target / shell / name,
              Filled(Read(folders.sources / (std::string("completion.") + shell + ".in")),
                     {{"@program@", frame.program}, {"@function@", function}, {"@grammar@", grammar}}));
    };
    complete("bash", frame.program, BashGrammar(facts));
    complete("zsh", '_' + frame.program, ZshGrammar(facts, function));
    complete("fish", frame.program + ".fish", FishGrammar(facts, frame.program, function));
}

void DescribeAll(const Folders& folders, const std::string& version, const std::string& date) {
    PageFrame frame{"permora-cli", version, date, Read(folders.sources / "surroundings.roff"), "permora"};
    Grammar grammar(AllCommands());
    Describe(grammar.Parser(), frame, folders);

    std::swap(frame.program, frame.related);
    CommandLine commandLine;
    Describe(*DescribeCommandLine(commandLine), frame, folders);
}

}  // namespace
}  // namespace permora::manual

int main(int argumentCount, char** arguments) {
    if (argumentCount != 5) {
        std::cerr << "permora-manual SOURCES TARGET VERSION DATE\n";
        return 2;
    }
    try {
        permora::manual::DescribeAll({arguments[1], arguments[2]}, arguments[3], arguments[4]);
    } catch (const std::exception& error) {
        std::cerr << "permora-manual: " << error.what() << '\n';
        return 1;
    }
    return 0;
}
