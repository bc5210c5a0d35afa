#include "framework/qt/file_types.h"

#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QMimeType>
#include <QStandardPaths>
#include <QStringList>
#include <algorithm>
#include <string_view>

#include "framework/images.h"

namespace permora::qt {
namespace {

// The theme of most desktops, for icons that the user's theme lacks.
constexpr const char* kUsualTheme = "Adwaita";

std::shared_ptr<const ShellPicture> PictureOf(const QIcon& icon, Size size) {
    constexpr qsizetype kChannels = 4;
    const QImage image = icon.pixmap(QSize(size.cx, size.cy), qGuiApp->devicePixelRatio())
                             .toImage()
                             .convertToFormat(QImage::Format_ARGB32);
    if (image.isNull()) return nullptr;
    auto picture = std::make_shared<ShellPicture>();
    picture->width = image.width();
    picture->height = image.height();
    for (int row = 0; row < image.height(); ++row)
        picture->pixels.insert(picture->pixels.end(), image.constScanLine(row),
                               image.constScanLine(row) + image.width() * kChannels);
    return picture;
}

QString LastPart(const QString& text) {
    return text.mid(text.lastIndexOf(u'.') + 1).toLower();
}

bool IsLiteral(QStringView pattern) {
    constexpr QStringView kSpecial = u"*?[\\";
    return std::ranges::none_of(pattern, [&](QChar letter) { return kSpecial.contains(letter); });
}

}  // namespace

NameRules::NameRules() {
    const QStringList folders = QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, QStringLiteral("mime"), QStandardPaths::LocateDirectory);
    isWhole = !folders.isEmpty();
    QStringList otherPatterns;
    for (const QString& folder : folders)
        AddRules(folder + QStringLiteral("/globs2"), otherPatterns);
    patterns.setPattern(otherPatterns.join(u'|'));
    patterns.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
    isWhole = isWhole && patterns.isValid();
}

// "weight:type:pattern" on each line, and perhaps flags.
void NameRules::AddRules(const QString& path, QStringList& otherPatterns) {
    constexpr qsizetype kPatternField = 2;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        isWhole = false;
        return;
    }
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        const QString pattern = line.section(u':', kPatternField, kPatternField);
        if (line.startsWith(u'#') || pattern.isEmpty()) continue;
        if (IsLiteral(pattern))
            names.insert(pattern.toLower());
        else if (pattern.startsWith(u"*.") && IsLiteral(pattern.sliced(2)))
            endings.insert(LastPart(pattern));
        else
            otherPatterns.append(QRegularExpression::wildcardToRegularExpression(pattern));
    }
}

bool NameRules::MayMatchEnding(const QString& name) const {
    return !isWhole || endings.contains(LastPart(name));
}

bool NameRules::MayMatchOther(const QString& name) const {
    if (!isWhole || names.contains(name.toLower())) return true;
    return !patterns.pattern().isEmpty() && patterns.match(name).hasMatch();
}

DesktopFileTypes::DesktopFileTypes() : before(thePresenters.fileTypes.exchange(this)) {
    if (QIcon::fallbackThemeName().isEmpty()) QIcon::setFallbackThemeName(kUsualTheme);
}

DesktopFileTypes::~DesktopFileTypes() {
    thePresenters.fileTypes = before;
}

std::string DesktopFileTypes::TypeOfName(const std::string& hostName) const {
    constexpr std::size_t kMostEndings = 4096;  // names come from disks that anyone may have written
    const QString name = QString::fromStdString(hostName);
    const std::lock_guard lock(mutex);
    if (!rules) rules.emplace();
    if (rules->MayMatchOther(name)) return Ask(name);
    const std::size_t dot = hostName.find('.');
    if (dot == hostName.npos || !rules->MayMatchEnding(name)) return {};
    const std::string_view ending = std::string_view(hostName).substr(dot);
    if (const auto known = typesOfEndings.find(ending); known != typesOfEndings.end()) return known->second;
    if (typesOfEndings.size() >= kMostEndings) typesOfEndings.clear();
    return typesOfEndings[std::string(ending)] = Ask(name);
}

std::string DesktopFileTypes::Ask(const QString& name) const {
    const QMimeType type = database.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    return type.isDefault() ? std::string() : type.name().toStdString();
}

std::string DesktopFileTypes::TextOf(const std::string& type) const {
    const std::lock_guard lock(mutex);
    const auto [entry, isNew] = texts.try_emplace(type);
    if (isNew) entry->second = database.mimeTypeForName(QString::fromStdString(type)).comment().toStdString();
    return entry->second;
}

ShellIcon DesktopFileTypes::IconOf(const std::string& type) const {
    const auto [entry, isNew] = icons.try_emplace(type);
    if (!isNew) return entry->second;
    const QMimeType known = database.mimeTypeForName(QString::fromStdString(type));
    const QIcon icon = QIcon::fromTheme(known.iconName(), QIcon::fromTheme(known.genericIconName()));
    entry->second = {PictureOf(icon, LargeIconSize()), PictureOf(icon, SmallIconSize())};
    return entry->second;
}

}  // namespace permora::qt
