#include "framework/folder_chooser.h"

#include <QFile>
#include <QFileDialog>

#include "framework/qt/widget.h"
#include "platform/host_path.h"

namespace permora {

bool ChooseFolder(CWnd& owner, const std::string& title, std::string& path) {
    const QString chosen = QFileDialog::getExistingDirectory(qt::WidgetOf(owner), qt::ToQt(title));
    if (chosen.isEmpty()) return false;
    path = PathFromArgument(QFile::encodeName(chosen).constData());
    return true;
}

}  // namespace permora
