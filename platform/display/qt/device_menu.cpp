#include "device_menu.h"

#include "start/list_anew.h"

#include <QFileDialog>
#include <QMessageBox>

namespace platform::qt {

DeviceMenu::DeviceMenu(QWidget& window, const display::HostServices& host, std::function<bool()> programRests)
    : window_(window), host_(host), menu_(tr("&Device"))
{
    const auto add = [this](const QString& text, const QString& title, const auto& action) {
        menu_.addAction(text, &window_, [this, title, action] { askForFolder(title, action); });
    };
    if (host_.openDevice)
        add(tr("&Open device..."), tr("Open device"),
            [this](const std::filesystem::path& folder) { return host_.openDevice(folder); });
    if (host_.showFolder) {
        add(tr("Add &card..."), tr("Add card"),
            [this](const std::filesystem::path& folder) { return host_.showFolder(folder, true); });
        add(tr("Add &folder..."), tr("Add folder"),
            [this](const std::filesystem::path& folder) { return host_.showFolder(folder, false); });
    }
    QObject::connect(&menu_, &QMenu::aboutToShow, &window_,
                     [ofHost = menu_.actions(), rests = std::move(programRests)] {
                         for (QAction* action : ofHost)
                             action->setEnabled(rests());
                     });
    menu_.addSeparator();
    QAction* anew = menu_.addAction(tr("&List anew"), &window_, [] { (void)display::listAnew(); });
    anew->setShortcut(Qt::Key_F5);
}

// Opens a dialog in which the user chooses a folder. This dialog is the desktop's own if the desktop has one.
void DeviceMenu::askForFolder(const QString& title,
                              const std::function<std::string(const std::filesystem::path&)>& action)
{
    auto* dialog = new QFileDialog(&window_, title, QDir::homePath());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    QObject::connect(dialog, &QFileDialog::fileSelected, &window_, [this, title, action](const QString& folder) {
        const std::string error = action(QFile::encodeName(folder).toStdString());
        (void)display::listAnew();
        if (error.empty())
            return;
        auto* box =
            new QMessageBox(QMessageBox::Warning, title, QString::fromStdString(error), QMessageBox::Ok, &window_);
        box->setAttribute(Qt::WA_DeleteOnClose);
        box->setTextFormat(Qt::PlainText);
        box->open();
    });
    dialog->open();
}

}  // namespace platform::qt
