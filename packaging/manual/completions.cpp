#include "manual/completions.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace permora::manual {
namespace {

const char* WordOf(ValueKind kind) {
    switch (kind) {
        case ValueKind::kText:
            return "text";
        case ValueKind::kPath:
            return "path";
        case ValueKind::kFile:
            return "file";
        case ValueKind::kFolder:
            return "folder";
        case ValueKind::kAccount:
            return "account";
        case ValueKind::kAccountPair:
            return "account_pair";
        case ValueKind::kShare:
            return "share";
        case ValueKind::kChange:
            return "change";
        case ValueKind::kKnown:
            return "known";
        case ValueKind::kKnownList:
            return "known_list";
    }
    return "text";
}

bool HasKnownValues(const OptionFacts& option) {
    return option.what.kind == ValueKind::kKnown || option.what.kind == ValueKind::kKnownList;
}

// With a backslash before each of `special`.
std::string WithBackslashes(std::string_view text, std::string_view special) {
    std::string escaped;
    for (const char letter : text) {
        if (special.find(letter) != special.npos) escaped += '\\';
        escaped += letter;
    }
    return escaped;
}

// For bash and zsh.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char letter : text)
        quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    return quoted + "'";
}

std::string FishQuoted(std::string_view text) {
    return "'" + WithBackslashes(text, "'\\") + "'";
}

std::string LastWord(const std::string& command) {
    return command.substr(command.rfind(' ') + 1);
}

// A part of the name of a function.
std::string FunctionPart(const std::string& words) {
    std::string part;
    for (const char letter : words)
        part += letter == ' ' || letter == '-' ? '_' : letter;
    return part;
}

void AddBashCommand(const CommandFacts& command, std::string& text) {
    std::string commands;
    std::string options;
    std::string kinds;
    std::string known;
    std::string greedy;
    std::string arguments;
    for (const CommandFacts& inner : command.commands)
        commands += ' ' + Quoted(LastWord(inner.name));
    for (const OptionFacts& option : command.options) {
        std::string values;
        for (const KnownValue& value : option.what.known)
            values += (values.empty() ? "" : "\n") + value.text;
        for (const std::string& name : option.names) {
            options += ' ' + Quoted(name);
            if (option.value.empty()) continue;
            kinds += " [" + Quoted(name) + "]=" + WordOf(option.what.kind);
            if (!values.empty()) known += " [" + Quoted(name) + "]=" + Quoted(values);
            if (option.isGreedy) greedy += name + ' ';
        }
    }
    std::string more;
    for (const OptionFacts& argument : command.arguments) {
        arguments += std::string(" ") + WordOf(argument.what.kind);
        if (argument.takesMany) more = WordOf(argument.what.kind);
    }
    text += "        " + Quoted(command.name) + ")\n";
    const auto set = [&text](const char* name, const std::string& values) {
        if (!values.empty()) text += std::string("            ") + name + "=(" + values.substr(1) + ")\n";
    };
    set("commands", commands);
    set("options", options);
    set("kinds", kinds);
    set("known", known);
    set("arguments", arguments);
    if (!greedy.empty()) text += "            greedy=" + Quoted(' ' + greedy) + '\n';
    if (!more.empty()) text += "            more=" + more + '\n';
    text += "            ;;\n";
    for (const CommandFacts& inner : command.commands)
        AddBashCommand(inner, text);
}

std::string ValuesFunction(const std::string& function, const CommandFacts& command,
                           const OptionFacts& option) {
    return function + "_values_" + FunctionPart(command.name + option.names.back());
}

std::string ZshAction(const std::string& function, const CommandFacts& command, const OptionFacts& option) {
    switch (option.what.kind) {
        case ValueKind::kText:
            return " ";
        case ValueKind::kPath:
        case ValueKind::kFile:
            return "_files";
        case ValueKind::kFolder:
            return "_files -/";
        default:
            break;
    }
    std::string action = ' ' + function + '_' + WordOf(option.what.kind);
    if (HasKnownValues(option)) action += ' ' + ValuesFunction(function, command, option);
    return action;
}

std::string ZshValue(const std::string& function, const CommandFacts& command, const OptionFacts& option) {
    return ':' + WithBackslashes(option.value, ":\\") + ':' + ZshAction(function, command, option);
}

// What a function of zsh for an option's or command's arguments gets.
void AddZshOption(const std::string& function, const CommandFacts& command, const OptionFacts& option,
                  std::string& text) {
    std::vector<std::string> excluded = option.excludes;
    excluded.insert(excluded.end(), option.choice.begin(), option.choice.end());
    if (!option.takesMany) excluded.insert(excluded.end(), option.names.begin(), option.names.end());
    std::string list;
    for (const std::string& name : excluded)
        list += (list.empty() ? "" : " ") + (name.starts_with('-') ? name : "*");
    for (const std::string& name : option.names) {
        std::string item = list.empty() ? "" : '(' + list + ')';
        if (option.takesMany) item += '*';
        item += name;
        if (!option.value.empty() && name.starts_with("--")) item += '=';
        item += '[' + WithBackslashes(Summary(option.description), "[]:\\") + ']';
        if (!option.value.empty())
            item += (option.isGreedy ? ":*-*" : "") + ZshValue(function, command, option);
        text += "        " + Quoted(item) + " \\\n";
    }
}

void AddZshCommand(const CommandFacts& command, const std::string& function, std::string& text) {
    for (const OptionFacts& option : command.options) {
        if (!HasKnownValues(option)) continue;
        text += ValuesFunction(function, command, option) + "() {\n    values=(\n";
        for (const KnownValue& value : option.what.known) {
            std::string item = WithBackslashes(value.text, ":\\");
            if (!value.description.empty()) item += ':' + value.description;
            text += "        " + Quoted(item) + '\n';
        }
        text += "    )\n}\n";
    }
    for (const CommandFacts& inner : command.commands)
        AddZshCommand(inner, function, text);

    const std::string own = command.name.empty() ? function : function + "__" + FunctionPart(command.name);
    text += own +
            "() {\n    local curcontext=$curcontext context state state_descr line ret=1\n    typeset -A "
            "opt_args\n"
            "    _arguments -S -C \\\n";
    for (const OptionFacts& option : command.options)
        AddZshOption(function, command, option, text);
    for (const OptionFacts& argument : command.arguments)
        text += "        " +
                Quoted((argument.takesMany    ? "*"
                        : argument.isRequired ? ""
                                              : ":") +
                       ZshValue(function, command, argument)) +
                " \\\n";
    if (command.commands.empty()) {
        text += "        && ret=0\n    return ret\n}\n";
        return;
    }
    text +=
        "        ':command:->command' \\\n        '*:: :->rest' \\\n        && ret=0\n"
        "    case $state in\n    command)\n        local -a commands=(\n";
    for (const CommandFacts& inner : command.commands)
        text += "            " +
                Quoted(LastWord(inner.name) + ':' + WithBackslashes(Summary(inner.description), "\\")) + '\n';
    text +=
        "        )\n        _describe -t commands command commands && ret=0\n        ;;\n    rest)\n"
        "        (( $+functions[" +
        own + "__$words[1]] )) && " + own +
        "__$words[1] && ret=0\n        ;;\n"
        "    esac\n    return ret\n}\n";
}

std::string FishValue(const std::string& function, const CommandFacts& command, const OptionFacts& option) {
    switch (option.what.kind) {
        case ValueKind::kText:
            return "";
        case ValueKind::kPath:
        case ValueKind::kFile:
            return " -F";
        case ValueKind::kFolder:
            return " -a '(__fish_complete_directories)'";
        case ValueKind::kKnown:
            return " -a '(" + ValuesFunction(function, command, option) + ")'";
        case ValueKind::kKnownList:
            return " -a '(" + function + "_list " + ValuesFunction(function, command, option) + ")'";
        default:
            return " -a '(" + function + '_' + WordOf(option.what.kind) + ")'";
    }
}

bool IsFile(const OptionFacts& option) {
    return option.what.kind == ValueKind::kPath || option.what.kind == ValueKind::kFile;
}

void AddFishCommand(const CommandFacts& command, const std::string& start, const std::string& function,
                    std::string& text) {
    const std::string line = start + " -n " + FishQuoted(function + "_at " + command.name);
    for (const CommandFacts& inner : command.commands)
        text += line + " -a " + LastWord(inner.name) + " -d " + FishQuoted(Summary(inner.description)) + '\n';
    for (const OptionFacts& option : command.options) {
        if (HasKnownValues(option)) {
            text += "function " + ValuesFunction(function, command, option) + "\n    printf '%s\\t%s\\n'";
            for (const KnownValue& value : option.what.known)
                text += " \\\n        " + FishQuoted(value.text) + ' ' + FishQuoted(value.description);
            text += "\nend\n";
        }
        text += line;
        for (const std::string& name : option.names)
            text += (name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1));
        if (!option.value.empty())
            text += (IsFile(option) ? " -r" : " -x") + FishValue(function, command, option);
        text += " -d " + FishQuoted(Summary(option.description)) + '\n';
    }
    for (const OptionFacts& argument : command.arguments)
        text += line + FishValue(function, command, argument) + '\n';
    for (const CommandFacts& inner : command.commands)
        AddFishCommand(inner, start, function, text);
}

// The words of all commands, and of all options that take a value behind their commands.
void AddFishWords(const CommandFacts& command, std::string& commands, std::string& options) {
    if (!command.name.empty()) commands += ' ' + FishQuoted(command.name);
    for (const OptionFacts& option : command.options)
        for (const std::string& name : option.names)
            if (!option.value.empty()) options += ' ' + FishQuoted(command.name + ' ' + name);
    for (const CommandFacts& inner : command.commands)
        AddFishWords(inner, commands, options);
}

}  // namespace

std::string BashGrammar(const CommandFacts& program) {
    std::string text;
    AddBashCommand(program, text);
    return text;
}

std::string ZshGrammar(const CommandFacts& program, const std::string& function) {
    std::string text;
    AddZshCommand(program, function, text);
    return text;
}

std::string FishGrammar(const CommandFacts& program, const std::string& programName,
                        const std::string& function) {
    std::string commands;
    std::string options;
    AddFishWords(program, commands, options);
    std::string text = "set -g " + function + "_commands" + commands + "\nset -g " + function +
                       "_with_value" + options + "\ncomplete -c " + programName + " -f\n";
    AddFishCommand(program, "complete -c " + programName, function, text);
    return text;
}

}  // namespace permora::manual
