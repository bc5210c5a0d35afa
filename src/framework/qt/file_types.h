// The desktop's types of files as the toolkit knows them: by the shared MIME database and the icon theme of
// freedesktop.org.
#pragma once

#include <QMimeDatabase>
#include <QRegularExpression>
#include <QSet>
#include <QString>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/file_types.h"

namespace permora::qt {

// Which rules of the database a name can match. The toolkit needs several microseconds for a name, and ten
// times as long to find that no rule matches.
//
// Format: "globs2", the list that update-mime-database makes beside the database. Where one is missing every
// name may match any rule.
class NameRules {
  public:
    NameRules();
    // Rules of the form "*.ending": they see nothing of a name before its first dot.
    bool MayMatchEnding(const QString& name) const;
    // All other rules.
    bool MayMatchOther(const QString& name) const;

  private:
    void AddRules(const QString& path, QStringList& patterns);

    QSet<QString> endings;        // behind the last dot, in lower case
    QSet<QString> names;          // in lower case
    QRegularExpression patterns;  // the rules that are neither
    bool isWhole = true;
};

// Sets itself for its own life (platform/presenters.h).
class DesktopFileTypes : public FileTypes {
  public:
    DesktopFileTypes();
    ~DesktopFileTypes() override;
    DesktopFileTypes(const DesktopFileTypes&) = delete;
    DesktopFileTypes& operator=(const DesktopFileTypes&) = delete;

    std::string TypeOfName(const std::string& hostName) const override;
    std::string TextOf(const std::string& type) const override;
    ShellIcon IconOf(const std::string& type) const override;

  private:
    std::string Ask(const QString& name) const;

    QMimeDatabase database;
    mutable std::map<std::string, ShellIcon> icons;  // by type, so that objects of a kind share theirs
    mutable std::mutex mutex;                        // of all below
    mutable std::optional<NameRules> rules;          // read when the first name is asked about
    mutable std::map<std::string, std::string, std::less<>> typesOfEndings;  // from the first dot of a name
    mutable std::map<std::string, std::string> texts;  // by type; each is looked up once
    const FileTypes* before;
};

}  // namespace permora::qt
