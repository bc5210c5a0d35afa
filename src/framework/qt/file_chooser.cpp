#include "framework/file_chooser.h"

#include <QFileDialog>
#include <QUrl>

#include "framework/qt/widget.h"
#include "platform/file_url.h"

namespace permora {

bool ChooseFileToSave(CWnd& owner, const std::string& title, std::span<const FileKind> kinds,
                      ChosenFile& file) {
    QFileDialog dialog(qt::WidgetOf(owner)->window(), qt::ToQt(title));
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    QStringList filters;
    for (const FileKind& kind : kinds)
        filters << QStringLiteral("%1 (*.%2)").arg(QLatin1String(kind.name), QLatin1String(kind.extension));
    dialog.setNameFilters(filters);
    const auto chosenKind = [&] {
        return std::max(filters.indexOf(dialog.selectedNameFilter()), qsizetype{0});
    };
    const auto showKind = [&] {
        dialog.setDefaultSuffix(QLatin1String(kinds[static_cast<std::size_t>(chosenKind())].extension));
    };
    QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, showKind);
    showKind();
    if (dialog.exec() != QDialog::Accepted || dialog.selectedUrls().isEmpty()) return false;
    std::string path = PathFromFileUrl(dialog.selectedUrls().front().toEncoded().toStdString());
    if (path.empty()) return false;
    std::size_t kind = static_cast<std::size_t>(chosenKind());
    for (std::size_t i = 0; i < kinds.size(); ++i)
        if (path.ends_with("." + std::string(kinds[i].extension))) kind = i;
    file = {std::move(path), kind};
    return true;
}

}  // namespace permora
