// The desktop's types of files as the toolkit knows them: by the shared MIME database and the icon theme of
// freedesktop.org.
#pragma once

#include <QMimeDatabase>
#include <QRegularExpression>
#include <QSet>
#include <QString>
#include <map>
#include <mutex>
#include <string>

#include "platform/file_types.h"

namespace permora::qt {

// Whether a name can match any rule of the database. The toolkit takes ten times as long to find that none
// does as to find one, and folders are full of names that say nothing.
//
// Format: "globs2", the list that update-mime-database makes beside the database. Where one is missing every
// name may match.
class TypedNames {
  public:
    TypedNames();
    bool MayMatch(const QString& name) const;

  private:
    void AddRules(const QString& path, QStringList& patterns);

    QSet<QString> endings;      // behind the last dot, in lower case
    QRegularExpression others;  // the rules that are no endings
    bool isWhole = true;
};

// Sets itself for its own life (platform/file_types.h).
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
    QMimeDatabase database;
    mutable std::map<std::string, ShellIcon> icons;  // by type, so that objects of a kind share theirs
    mutable std::mutex textsInUse;
    mutable std::map<std::string, std::string> texts;  // by type; each is looked up once
    const FileTypes* before;
};

}  // namespace permora::qt
