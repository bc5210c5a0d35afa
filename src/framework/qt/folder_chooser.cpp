#include "framework/folder_chooser.h"

#include <QFileDialog>
#include <QUrl>

#include "framework/qt/widget.h"
#include "platform/file_url.h"

namespace permora {

bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path) {
    const QUrl start = QUrl::fromEncoded(QByteArray::fromStdString(FileUrlOf(path)));
    const QUrl chosen = QFileDialog::getExistingDirectoryUrl(qt::WidgetOf(owner), qt::ToQt(title), start);
    const std::string chosenPath = PathFromFileUrl(chosen.toEncoded().toStdString());
    if (chosenPath.empty()) return false;
    path = chosenPath;
    return true;
}

}  // namespace permora
