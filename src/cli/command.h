// What every command of the terminal program is made of: its options, declared as members, and its work.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/messages.h"
#include "cli/value_kind.h"

namespace CLI {  // NOLINT(readability-identifier-naming): the parser names itself so
class App;
}  // namespace CLI

namespace permora {

class Command;
class TextOption;

// The exit code for scripts.
enum class ExitCode : std::uint8_t {
    kDone = 0,
    kSomeFailed = 1,   // and every other was done, unless the program had to break off
    kWouldChange = 1,  // of --check, which ...
    kUsage = 2,        // nothing was touched
    kCheckFailed = 3,  // ... keeps failures apart
};

constexpr ExitCode ExitCodeOf(bool allDone) {
    return allDone ? ExitCode::kDone : ExitCode::kSomeFailed;
}

// Where commands add themselves: the program, or a command with commands of its own. All is borrowed and must
// outlive the commands.
struct CommandParent {
    CLI::App& parser;
    Command*& chosen;  // set by the parser: the command that the user named
    ConsoleMessages& messages;
};

class Command {
  public:
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    // Interprets the parsed arguments. Returns the fault, or an empty text.
    virtual std::string Interpret();
    // Does the work. What fails is named on standard error.
    virtual ExitCode Run() = 0;

    // Includes an option in Interpret. It must live as long as this.
    void Add(TextOption& option) { options.push_back(&option); }
    CLI::App& Parser() { return parser; }
    // As the user types it: "grant", "shares show".
    std::string Name() const;
    // The server of the objects that the command is about, for the names of accounts (LookupAccountByName);
    // empty for this machine, and where they are not of one.
    virtual std::string Server() const { return {}; }
    // How the program ends when the work is broken off, or its output cannot be written.
    ExitCode FailureCode() const { return failureCode; }
    // A check keeps failures apart.
    void SetFailureCode(ExitCode code) { failureCode = code; }

  protected:
    Command(const CommandParent& parent, const char* name, const char* description);
    // For the commands that belong to this one.
    CommandParent AsParent() { return {parser, chosen, messages}; }

    ConsoleMessages& messages;

  private:
    CLI::App& parser;
    Command*& chosen;
    std::vector<TextOption*> options;
    ExitCode failureCode = ExitCode::kSomeFailed;
};

using MakeCommand = std::unique_ptr<Command>(const CommandParent& parent);

// The place of an option: a command, or a choice among some of its options.
struct OptionPlace {
    OptionPlace(Command& owner)
        : command(owner), parser(owner.Parser()) {}  // NOLINT(google-explicit-constructor)
    OptionPlace(Command& owner, CLI::App& group) : command(owner), parser(group) {}

    Command& command;
    CLI::App& parser;
};

// Exactly one of the options in it must be given.
struct Choice : OptionPlace {
    explicit Choice(Command& owner);
};

enum class Presence : std::uint8_t { kOptional, kRequired };

// An option without a value.
class Flag {
  public:
    Flag(OptionPlace place, const char* name, const char* description);
    Flag(const Flag&) = delete;
    Flag& operator=(const Flag&) = delete;

    // Whether it was given.
    explicit operator bool() const { return isSet; }
    // It is refused without the other option, or together with it.
    void Needs(const Flag& other);
    void Needs(const TextOption& other);
    void Excludes(const Flag& other);

  private:
    bool isSet = false;
    CLI::Option& option;
};

// An option with a text. A member of its command. One whose text has a meaning of its own is derived from it.
class TextOption {
  public:
    // `type` represents the text in the help.
    TextOption(OptionPlace place, const char* name, const char* type, const std::string& description,
               Presence presence = Presence::kOptional);
    virtual ~TextOption() = default;
    TextOption(const TextOption&) = delete;
    TextOption& operator=(const TextOption&) = delete;

    // What the text is, for those who complete it.
    void Describe(const ValueDescription& description) { DescribeValue(option, description); }
    // As typed; nothing when the option was not given.
    std::optional<std::string> Text() const;
    // Finds the meaning of what was typed, when the option was given. Returns what is wrong with it, or an
    // empty text.
    virtual std::string Interpret(const std::string& /*text*/) { return {}; }

  private:
    friend class Flag;
    std::optional<std::string> shielded;
    CLI::Option& option;
};

}  // namespace permora
