#include "cli/word_option.h"

#include <CLI/CLI.hpp>

#include "cli/argument_shield.h"
#include "saved/account_pairs.h"
#include "security/account_lookup.h"
#include "security/account_record.h"

namespace permora {

WordOption::WordOption(Command& owner) : command(owner) {
    owner.Parser()
        .add_option("--word", typed,
                    "In a file of icacls: the account that a word such as LA (the administrator of\n"
                    "the machine on which the file was saved) or DA (the administrators of its domain)\n"
                    "means. May be given several times")
        ->type_name("WORD=ACCOUNT")
        ->allow_extra_args(false);
}

std::string WordOption::Interpret() {
    const std::string server = typed.empty() ? std::string() : command.Server();
    for (const std::string& shielded : typed) {
        const std::string text = Unshielded(shielded);
        AccountPair pair;
        if (!ReadAccountPair(text, pair)) return "--word: not WORD=ACCOUNT: " + text;
        AccountRecord account;
        if (const std::string problem = FindTypedAccount(pair.other, account, server); !problem.empty())
            return "--word: " + problem;
        if (accounts.Define(pair.old, *account.sid)) continue;
        return "--word: " + pair.old +
               (accounts.Find(pair.old) ? " is to mean two different accounts"
                                        : " is no word for an account of a machine or domain");
    }
    return {};
}

}  // namespace permora
