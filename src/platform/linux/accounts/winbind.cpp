#include "platform/linux/accounts/winbind.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

namespace permora::host {

namespace {

// More than any domain hands over at once.
constexpr std::size_t kMostRows = 10'000'000;

// A result of the library.
template <class T>
class Result {
  public:
    explicit Result(const WinbindLibrary& functions) : library(functions) {}
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;
    ~Result() {
        // The library's function takes what its own calls gave, constant or not.
        if (value != nullptr) library.freeMemory(const_cast<std::remove_const_t<T>*>(value));
    }

    T** operator&() { return &value; }  // NOLINT(google-runtime-operator): as the library wants it
    T* Get() const { return value; }

  private:
    const WinbindLibrary& library;
    T* value = nullptr;
};

WinbindAnswer AnswerOf(int code) {
    switch (code) {
        case kWinbindSuccess:
            return WinbindAnswer::kFound;
        case kWinbindInvalidSid:
        case kWinbindInvalidParameter:
        case kWinbindDomainNotFound:
        case kWinbindUnknownUser:
        case kWinbindUnknownGroup:
            return WinbindAnswer::kNotFound;
        case kWinbindAuthenticationFailed:
            return WinbindAnswer::kRefused;
        default:
            return WinbindAnswer::kFailed;
    }
}

WinbindSid ToWinbind(const nt::Sid& sid) {
    WinbindSid result{1, static_cast<std::uint8_t>(sid.SubAuthorityCount()), {}, {}};
    for (std::size_t i = 0; i < 6; ++i)
        result.authority[i] = static_cast<std::uint8_t>(sid.Authority() >> (8 * (5 - i)));
    for (std::size_t i = 0; i < sid.SubAuthorityCount(); ++i)
        result.subAuthorities[i] = sid.SubAuthority(i);
    return result;
}

std::vector<WinbindSid> ToWinbind(std::span<const nt::Sid> sids) {
    std::vector<WinbindSid> result;
    std::ranges::transform(sids, std::back_inserter(result),
                           [](const nt::Sid& sid) { return ToWinbind(sid); });
    return result;
}

std::optional<nt::Sid> FromWinbind(const WinbindSid& sid) {
    if (sid.revision != 1 || sid.count > nt::Sid::kMaxSubAuthorities) return std::nullopt;
    std::uint64_t authority = 0;
    for (const std::uint8_t byte : sid.authority)
        authority = authority << 8 | byte;
    std::optional<nt::Sid> result = nt::Sid(authority, {});
    for (std::size_t i = 0; result && i < sid.count; ++i)
        result = result->Append(sid.subAuthorities[i]);
    return result;
}

template <class T>
std::optional<std::vector<nt::Sid>> FromWinbind(const T* first, std::size_t count,
                                                const WinbindSid& (*sidOf)(const T&)) {
    if (count > kMostRows || (count > 0 && first == nullptr)) return std::nullopt;
    std::vector<nt::Sid> sids;
    for (const T& element : std::span(first, count)) {
        const std::optional<nt::Sid> sid = FromWinbind(sidOf(element));
        if (!sid) return std::nullopt;
        if (std::ranges::find(sids, *sid) == sids.end()) sids.push_back(*sid);
    }
    return sids;
}

std::string TextOf(const char* text) {
    return text != nullptr && IsPlainAccountName(text) ? std::string(text) : std::string();
}

// Older libraries have no trust routing. There the second element begins earlier, with the revision of its
// SID where a newer one has the lowest byte of a pointer to allocated memory, which is even.
std::size_t BytesOfDomainInfo(const WinbindDomainInfo* infos, std::size_t count) {
    constexpr std::size_t kShort = sizeof(WinbindDomainInfo) - sizeof(char*);
    if (count < 2) return sizeof(WinbindDomainInfo);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(infos);
    return bytes[kShort + offsetof(WinbindDomainInfo, sid)] == 1 ? kShort : sizeof(WinbindDomainInfo);
}

// domainFlags and trustType of the library.
constexpr std::uint32_t kOfflineFlag = 0x8;
constexpr std::uint32_t kLocalTrust = 4;
constexpr std::uint32_t kMembersTrust = 5;                // of a member in its domain
constexpr std::uint32_t kControllersTrust[] = {6, 7, 8};  // of a controller in its own

std::optional<WinbindDomain> ReadDomain(const std::byte* place) {
    WinbindDomainInfo info{};
    std::memcpy(&info, place, offsetof(WinbindDomainInfo, trustRouting));
    const std::optional<nt::Sid> sid = FromWinbind(info.sid);
    WinbindDomain domain{TextOf(info.shortName), TextOf(info.dnsName), {}};
    if (!sid || domain.name.empty()) return std::nullopt;
    domain.sid = *sid;
    domain.isLocal = info.trustType == kLocalTrust;
    domain.isOwn = info.trustType == kMembersTrust ||
                   std::ranges::find(kControllersTrust, info.trustType) != std::end(kControllersTrust);
    domain.isOffline = (info.domainFlags & kOfflineFlag) != 0;
    return domain;
}

WinbindName NameOf(const char* domain, const char* name, int type) {
    // 6 to 8: deleted, invalid, unknown.
    if (type < 1 || (type >= 6 && type <= 8)) return {};
    return {TextOf(name), TextOf(domain), type};
}

}  // namespace

Winbind::Winbind(const WinbindLibrary& functions, WinbindContext* connection)
    : library(functions), context(connection) {}

Winbind::~Winbind() {
    library.freeContext(context);
}

std::unique_ptr<Winbind> Winbind::Connect() {
    const WinbindLibrary* functions = TheWinbindLibrary();
    WinbindContext* connection = functions != nullptr ? functions->createContext() : nullptr;
    if (connection == nullptr) return nullptr;
    return std::unique_ptr<Winbind>(new Winbind(*functions, connection));
}

Winbind* Winbind::OfThisThread() {
    thread_local const std::unique_ptr<Winbind> kConnection = Connect();
    // The analyzer takes the variable for one that is gone at the end of this function.
    return kConnection.get();  // NOLINT(clang-analyzer-cplusplus.NewDelete)
}

WinbindAnswer Winbind::ListDomains(std::vector<WinbindDomain>& domains) {
    Result<WinbindDomainInfo> infos(library);
    std::size_t count = 0;
    const WinbindAnswer answer = AnswerOf(library.listTrusts(context, &infos, &count));
    if (answer != WinbindAnswer::kFound) return answer;
    if (count > kMostRows || (count > 0 && infos.Get() == nullptr)) return WinbindAnswer::kFailed;
    const std::size_t bytes = BytesOfDomainInfo(infos.Get(), count);
    std::vector<WinbindDomain> found;
    for (std::size_t i = 0; i < count; ++i) {
        auto domain = ReadDomain(reinterpret_cast<const std::byte*>(infos.Get()) + i * bytes);
        if (domain) found.push_back(*std::move(domain));
    }
    domains = std::move(found);
    return answer;
}

WinbindAnswer Winbind::Ping(const std::string& domain) {
    return AnswerOf(library.pingDc(context, domain.c_str(), nullptr));
}

WinbindAnswer Winbind::FindName(const nt::Sid& sid, WinbindName& name) {
    Result<char> domainText(library);
    Result<char> nameText(library);
    int type = 0;
    const WinbindSid wanted = ToWinbind(sid);
    const WinbindAnswer answer = AnswerOf(library.lookupSid(context, &wanted, &domainText, &nameText, &type));
    if (answer != WinbindAnswer::kFound) return answer;
    WinbindName found = NameOf(domainText.Get(), nameText.Get(), type);
    if (found.name.empty()) return WinbindAnswer::kNotFound;
    name = std::move(found);
    return answer;
}

WinbindAnswer Winbind::FindNames(const nt::Sid& domain, std::vector<std::uint32_t> relativeIds,
                                 std::vector<WinbindName>& names) {
    Result<const char> domainName(library);
    Result<const char*> nameTexts(library);
    Result<int> types(library);
    WinbindSid wanted = ToWinbind(domain);
    const WinbindAnswer answer =
        AnswerOf(library.lookupRids(context, &wanted, static_cast<int>(relativeIds.size()),
                                    relativeIds.data(), &domainName, &nameTexts, &types));
    if (answer != WinbindAnswer::kFound) return answer;
    if (nameTexts.Get() == nullptr || types.Get() == nullptr) return WinbindAnswer::kFailed;
    std::vector<WinbindName> found;
    for (std::size_t i = 0; i < relativeIds.size(); ++i)
        found.push_back(NameOf(domainName.Get(), nameTexts.Get()[i], types.Get()[i]));
    names = std::move(found);
    return answer;
}

WinbindAnswer Winbind::FindSid(const std::string& domain, const std::string& name, nt::Sid& sid) {
    WinbindSid found{};
    int type = 0;
    const WinbindAnswer answer =
        AnswerOf(library.lookupName(context, domain.c_str(), name.c_str(), &found, &type));
    if (answer != WinbindAnswer::kFound) return answer;
    const std::optional<nt::Sid> value = FromWinbind(found);
    if (!value) return WinbindAnswer::kFailed;
    sid = *value;
    return answer;
}

WinbindAnswer Winbind::ListNames(AccountKind kind, const std::string& domain,
                                 std::vector<std::string>& names) {
    Result<const char*> texts(library);
    std::uint32_t count = 0;
    const auto list = kind == AccountKind::kUser ? library.listUsers : library.listGroups;
    const WinbindAnswer answer = AnswerOf(list(context, domain.c_str(), &count, &texts));
    if (answer != WinbindAnswer::kFound) return answer;
    if (count > kMostRows || (count > 0 && texts.Get() == nullptr)) return WinbindAnswer::kFailed;
    std::vector<std::string> found;
    for (const char* text : std::span(texts.Get(), count)) {
        std::string_view name(text != nullptr ? text : "");
        name.remove_prefix(name.find('\\') != name.npos ? name.find('\\') + 1 : 0);
        if (IsPlainAccountName(name)) found.emplace_back(name);
    }
    names = std::move(found);
    return answer;
}

WinbindAnswer Winbind::FindGroupsOfUser(const nt::Sid& user, std::vector<nt::Sid>& sids) {
    Result<WinbindSid> found(library);
    std::uint32_t count = 0;
    const WinbindSid wanted = ToWinbind(user);
    const WinbindAnswer answer = AnswerOf(library.lookupUserSids(context, &wanted, false, &count, &found));
    if (answer != WinbindAnswer::kFound) return answer;
    auto read = FromWinbind<WinbindSid>(found.Get(), count,
                                        [](const WinbindSid& sid) -> const WinbindSid& { return sid; });
    if (!read || std::ranges::find(*read, user) == read->end()) return WinbindAnswer::kFailed;
    sids = *std::move(read);
    return answer;
}

WinbindAnswer Winbind::FindAliases(const nt::Sid& domain, std::span<const nt::Sid> members,
                                   std::vector<nt::Sid>& aliases) {
    Result<std::uint32_t> relativeIds(library);
    std::uint32_t count = 0;
    const WinbindSid wanted = ToWinbind(domain);
    std::vector<WinbindSid> sids = ToWinbind(members);
    const WinbindAnswer answer = AnswerOf(library.getSidAliases(
        context, &wanted, sids.data(), static_cast<std::uint32_t>(sids.size()), &relativeIds, &count));
    if (answer != WinbindAnswer::kFound) return answer;
    if (count > kMostRows || (count > 0 && relativeIds.Get() == nullptr)) return WinbindAnswer::kFailed;
    std::vector<nt::Sid> found;
    for (const std::uint32_t relativeId : std::span(relativeIds.Get(), count))
        if (const std::optional<nt::Sid> sid = domain.Append(relativeId)) found.push_back(*sid);
    aliases = std::move(found);
    return answer;
}

WinbindAnswer Winbind::FindGroupsOfTicket(std::span<const std::uint8_t> data, std::vector<nt::Sid>& sids) {
    std::vector<std::uint8_t> copy(data.begin(), data.end());
    WinbindLogon logon{};
    logon.level = kLogonByTicket;
    logon.ticket = {copy.data(), copy.size()};
    Result<WinbindLogonResult> result(library);
    const WinbindAnswer answer = AnswerOf(library.authenticate(context, &logon, &result, nullptr));
    if (answer != WinbindAnswer::kFound) return answer;
    if (result.Get() == nullptr) return WinbindAnswer::kFailed;
    auto read = FromWinbind<WinbindSidAndAttributes>(
        result.Get()->sids, result.Get()->sidCount,
        [](const WinbindSidAndAttributes& sid) -> const WinbindSid& { return sid.sid; });
    if (!read || read->empty()) return WinbindAnswer::kFailed;
    sids = *std::move(read);
    return answer;
}

WinbindAnswer Winbind::FindHostIds(std::span<const nt::Sid> sids, std::vector<HostIds>& ids) {
    constexpr int kUserId = 1;
    constexpr int kGroupId = 2;
    constexpr int kBoth = 3;
    const std::vector<WinbindSid> wanted = ToWinbind(sids);
    std::vector<WinbindUnixId> read(wanted.size());
    const WinbindAnswer answer = AnswerOf(library.sidsToUnixIds(
        context, wanted.data(), static_cast<std::uint32_t>(wanted.size()), read.data()));
    if (answer != WinbindAnswer::kFound) return answer;
    std::vector<HostIds> found;
    for (const WinbindUnixId& row : read) {
        HostIds both;
        const bool isNobody = row.id == std::numeric_limits<id_t>::max();
        if ((row.type == kUserId || row.type == kBoth) && !isNobody) both.user = row.id;
        if ((row.type == kGroupId || row.type == kBoth) && !isNobody) both.group = row.id;
        found.push_back(both);
    }
    ids = std::move(found);
    return answer;
}

WinbindAnswer Winbind::FindUser(const nt::Sid& sid, uid_t& user) {
    const WinbindSid wanted = ToWinbind(sid);
    uid_t found = 0;
    const WinbindAnswer answer = AnswerOf(library.sidToUid(context, &wanted, &found));
    if (answer != WinbindAnswer::kFound) return answer;
    if (found == std::numeric_limits<uid_t>::max()) return WinbindAnswer::kNotFound;
    user = found;
    return answer;
}

WinbindAnswer Winbind::FindSidOf(AccountKind kind, id_t id, nt::Sid& sid) {
    WinbindSid found{};
    const auto find = kind == AccountKind::kUser ? library.uidToSid : library.gidToSid;
    const WinbindAnswer answer = AnswerOf(find(context, id, &found));
    if (answer != WinbindAnswer::kFound) return answer;
    const std::optional<nt::Sid> value = FromWinbind(found);
    if (!value) return WinbindAnswer::kFailed;
    sid = *value;
    return answer;
}

}  // namespace permora::host
