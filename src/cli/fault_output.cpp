#include "cli/fault_output.h"

#include "cli/terminal_output.h"
#include "cli/terminal_text.h"
#include "platform/system_message.h"
#include "security/account_record.h"

namespace permora {
namespace {

Json FaultJson(const std::string& path, Remark remark) {
    return {{"path", path}, {"code", CodeOf(remark)}, {"text", TextOf(remark)}};
}

std::string FaultAccountName(const nt::Sid& sid) {
    AccountRecord record;
    record.sid = sid;
    return AccountDisplayName(record);
}

Json WhoJson(const ModeFinding& finding) {
    Json json = {{"account", FaultAccountName(finding.account)}, {"sid", finding.account.ToText()}};
    if (finding.error != ERROR_SUCCESS) {
        json["error"] = finding.error;
        json["reason"] = SystemMessageLine(finding.error);
        return json;
    }
    json["isOpenGroup"] = finding.isOpen;
    json["reading"] = finding.isReading;
    json["writing"] = finding.isWriting;
    return json;
}

}  // namespace

void FaultOutput::Add(const std::string& path, Remark remark) {
    if (form == FaultForm::kJson)
        array.Add(FaultJson(path, remark));
    else
        Print(PrintableText(path) + ": " + TextOf(remark) + '\n');
}

void FaultOutput::AddMissed(const std::string& path, Remark remark, DWORD error) {
    if (form == FaultForm::kLines) return;
    Json json = FaultJson(path, remark);
    if (error != ERROR_SUCCESS) {
        json["error"] = error;
        json["reason"] = SystemMessageLine(error);
    }
    array.Add(json);
}

void FaultOutput::AddModes(const std::string& path, const std::string& share,
                           const std::vector<ModeFinding>& findings) {
    for (const Remark remark : {Remark::kModeKeepsOut, Remark::kModeLetsIn, Remark::kModeUnasked}) {
        std::vector<const ModeFinding*> about;
        for (const ModeFinding& finding : findings)
            if (finding.remark == remark) about.push_back(&finding);
        if (about.empty()) continue;
        if (form == FaultForm::kLines) {
            Print(PrintableText(path) + ": " + TextOf(remark) + ", in the share " + PrintableText(share) +
                  ": " + PrintableText(PeopleText(about, AccountDisplayName)) + '\n');
            continue;
        }
        Json json = FaultJson(path, remark);
        json["share"] = share;
        json["accounts"] = Json::array();
        for (const ModeFinding* const finding : about)
            json["accounts"].push_back(WhoJson(*finding));
        array.Add(json);
    }
}

void FaultOutput::End(const Json& rest) {
    if (form == FaultForm::kJson) array.End(rest);
}

}  // namespace permora
