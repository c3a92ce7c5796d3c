#include "dialogs.h"

#include "appinfo.h"
#include "appmodel.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QMessageBox>
#include <QPalette>
#include <QPointer>
#include <QProcess>
#include <QPushButton>
#include <QUrl>

namespace tock::Dialogs {

namespace {

QString homeAbbreviated(const QString &folder)
{
    QString path = QDir::cleanPath(folder);
    const QString home = QDir::cleanPath(QDir::homePath());
    if (path == home)
        path = QStringLiteral("~");
    else if (path.startsWith(home + QLatin1Char('/')))
        path = QStringLiteral("~") + path.mid(home.size());
    return path + QLatin1Char('/');
}

QString paragraph(const QStringList &lines, const QString &style)
{
    QStringList escaped;
    for (const QString &line : lines)
        escaped << line.toHtmlEscaped();
    return QStringLiteral("<p align=\"center\" style=\"margin-top:6px; %1\">%2</p>")
        .arg(style, escaped.join(QStringLiteral("<br>")));
}

// Wide enough that alerts do not wrap every few words.
QString readableWidth()
{
    return QStringLiteral("QLabel#qt_msgbox_label, QLabel#qt_msgbox_informativelabel { min-width: 26em; }");
}

} // namespace

QList<QStringList> aboutParagraphs(const QString &folder)
{
#ifdef Q_OS_MACOS
    const QString keys = QStringLiteral("\u2318N add \u00B7 \u2318Z undo \u00B7 \u23181\u2013\u23187 style \u00B7 "
                                        "\u2318+ \u2318\u2212 \u23180 size");
#else
    const QString keys = QStringLiteral("Ctrl+N add \u00B7 Ctrl+Z undo \u00B7 Ctrl+1\u2013Ctrl+7 style \u00B7 "
                                        "Ctrl++ Ctrl+\u2212 Ctrl+0 size");
#endif
    return {
        {AppInfo::tagline()},
        {QStringLiteral("Timers are saved in"), homeAbbreviated(folder)},
        {keys, QStringLiteral("Swipe left or \u232B to delete \u00B7 drag to reorder"), QStringLiteral("In Shell: type help")},
    };
}

namespace {

// A dialog belongs to the window: parented to it (transient for it, so window managers and
// compositors place it over the window, centred, and GNOME attaches a modal one), with a title
// and a close button only. On desktops without server-side decorations Qt draws its own title
// bar; it then offers no maximize button either.
void belongToWindow(QMessageBox *box)
{
    box->setWindowFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
}

} // namespace

QMessageBox *showAbout(QWidget *parent, const QString &folder)
{
    const QList<QStringList> paragraphs = aboutParagraphs(folder);
    const QString secondary = QApplication::palette().color(QPalette::PlaceholderText).name();
    const QString small = QStringLiteral("font-size:11px; color:%1;").arg(secondary);
    QString html = paragraph(paragraphs.at(0), QStringLiteral("font-size:12px; font-weight:600;"));
    html += paragraph(paragraphs.at(1), small);
    html += paragraph(paragraphs.at(2), small);

    auto *box = new QMessageBox(parent);
    belongToWindow(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("about"));
    box->setWindowTitle(QStringLiteral("About Tock"));
    box->setIconPixmap(QApplication::windowIcon().pixmap(64, 64));
    box->setTextFormat(Qt::RichText);
    box->setText(QStringLiteral("<p align=\"center\"><b>%1</b> %2</p>")
                     .arg(AppInfo::name().toHtmlEscaped(), AppInfo::versionLine().toHtmlEscaped()));
    box->setInformativeText(html);
    box->setStandardButtons(QMessageBox::Ok);
    // Wide enough that the key line stays one line.
    box->setStyleSheet(QStringLiteral("QLabel#qt_msgbox_informativelabel { min-width: 32em; }"));
    box->setModal(false);
    box->show();
    box->raise();
    box->activateWindow();
    return box;
}

void showDataFolder(const QString &folder)
{
    if (folder.isEmpty())
        return;
#ifdef Q_OS_MACOS
    QProcess::startDetached(QStringLiteral("open"), {QStringLiteral("-R"), folder});
#else
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
#endif
}

QMessageBox *askStartFresh(AppModel *model, QWidget *parent)
{
    static QPointer<QMessageBox> open;
    if (open) {
        open->raise();
        open->activateWindow();
        return open;
    }
    const Confirmation question = AppModel::startFreshQuestion();
    auto *box = new QMessageBox(parent);
    belongToWindow(box);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("startFresh"));
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(QStringLiteral("Tock"));
    box->setText(question.title);
    box->setInformativeText(question.text);
    QPushButton *yes = box->addButton(question.confirmButton, QMessageBox::AcceptRole);
    QPushButton *no = box->addButton(question.cancelButton, QMessageBox::RejectRole);
    box->setDefaultButton(yes);
    box->setEscapeButton(no);
    box->setStyleSheet(readableWidth());
    QPointer<AppModel> target(model);
    QObject::connect(box, &QMessageBox::buttonClicked, box, [target, yes](QAbstractButton *clicked) {
        if (clicked == yes && target)
            target->confirmStartFresh();
    });
    open = box;
    box->open();
    return box;
}

void answerStartFresh(AppModel *model, QWidget *parent)
{
    QObject::connect(model, &AppModel::startFreshRequested, parent, [model, parent] { askStartFresh(model, parent); });
}

QMessageBox *askQuitWithoutSaving(QWidget *parent, const QString &reason, std::function<void()> quit)
{
    static QPointer<QMessageBox> open;
    if (open) {
        open->raise();
        open->activateWindow();
        return open;
    }
    auto *box = new QMessageBox(parent);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setObjectName(QStringLiteral("quitWithoutSaving"));
    box->setIcon(QMessageBox::Warning);
    box->setWindowTitle(QStringLiteral("Tock"));
    box->setText(QStringLiteral("Quit without saving?"));
    box->setInformativeText(reason);
    QPushButton *yes = box->addButton(QStringLiteral("Quit Without Saving"), QMessageBox::DestructiveRole);
    QPushButton *no = box->addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(no);
    box->setEscapeButton(no);
    box->setStyleSheet(readableWidth());
    QObject::connect(box, &QMessageBox::buttonClicked, box, [yes, quit = std::move(quit)](QAbstractButton *clicked) {
        if (clicked == yes)
            quit();
    });
    open = box;
    box->open();
    return box;
}

void showStartAlert(const QString &title, const QString &text)
{
    QMessageBox box;
    box.setIcon(QMessageBox::Warning);
    box.setWindowTitle(QStringLiteral("Tock"));
    box.setText(title);
    box.setInformativeText(text);
    box.setStandardButtons(QMessageBox::Ok);
    box.setStyleSheet(readableWidth());
    box.exec();
}

} // namespace tock::Dialogs
