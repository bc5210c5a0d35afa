#include "framework/qt/file_types.h"

#include <QFile>
#include <QGuiApplication>
#include <QIcon>
#include <QImage>
#include <QMimeType>
#include <QStandardPaths>
#include <QStringList>

#include "framework/images.h"

namespace permora::qt {
namespace {

// The theme that most desktops have, for what the user's own lacks.
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

}  // namespace

TypedNames::TypedNames() {
    const QStringList folders = QStandardPaths::locateAll(
        QStandardPaths::GenericDataLocation, QStringLiteral("mime"), QStandardPaths::LocateDirectory);
    isWhole = !folders.isEmpty();
    QStringList patterns;
    for (const QString& folder : folders)
        AddRules(folder + QStringLiteral("/globs2"), patterns);
    others.setPattern(patterns.join(u'|'));
    others.setPatternOptions(QRegularExpression::CaseInsensitiveOption);
    isWhole = isWhole && others.isValid();
}

// "weight:type:pattern" on each line, and perhaps flags.
void TypedNames::AddRules(const QString& path, QStringList& patterns) {
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
        const QString ending = pattern.mid(2);
        const bool isEnding = pattern.startsWith(u"*.") && !ending.contains(u'*') && !ending.contains(u'?') &&
                              !ending.contains(u'[') && !ending.contains(u'\\');
        if (isEnding)
            endings.insert(LastPart(ending));
        else
            patterns.append(QRegularExpression::wildcardToRegularExpression(pattern));
    }
}

bool TypedNames::MayMatch(const QString& name) const {
    if (!isWhole || endings.contains(LastPart(name))) return true;
    return !others.pattern().isEmpty() && others.match(name).hasMatch();
}

DesktopFileTypes::DesktopFileTypes() : before(SetFileTypes(this)) {
    if (QIcon::fallbackThemeName().isEmpty()) QIcon::setFallbackThemeName(kUsualTheme);
}

DesktopFileTypes::~DesktopFileTypes() {
    SetFileTypes(before);
}

std::string DesktopFileTypes::TypeOfName(const std::string& hostName) const {
    const QString name = QString::fromStdString(hostName);
    static const TypedNames typedNames;  // read when the first name is asked about
    if (!typedNames.MayMatch(name)) return {};
    const QMimeType type = database.mimeTypeForFile(name, QMimeDatabase::MatchExtension);
    return type.isDefault() ? std::string() : type.name().toStdString();
}

std::string DesktopFileTypes::TextOf(const std::string& type) const {
    const std::lock_guard lock(textsInUse);
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
