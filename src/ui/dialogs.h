// The panels and alerts Tock shows around the window: About, the data folder in the file
// viewer, the start-fresh question and the alerts that end a start. Questions asked while the
// application runs never run a nested event loop, so no model call waits on the user.
#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class QMessageBox;
class QWidget;

namespace tock {

class AppModel;

namespace Dialogs {

// The About panel's three paragraphs, each as its lines: the tagline; where timers are saved
// (`folder` with the home folder written as ~); the keys.
QList<QStringList> aboutParagraphs(const QString &folder);
// Opens the About panel (not modal) and brings it to the front; returns it (deleted on close).
QMessageBox *showAbout(QWidget *parent, const QString &folder);

// Shows `folder` in the desktop's file viewer (on macOS selected in the Finder window).
void showDataFolder(const QString &folder);

// Asks whether to set unreadable data aside; "Start Fresh" calls the model's
// confirmStartFresh(). Returns the question (deleted on close); a question already open is
// raised instead of asking twice.
QMessageBox *askStartFresh(AppModel *model, QWidget *parent);
// Answers every startFreshRequested() of `model` with askStartFresh.
void answerStartFresh(AppModel *model, QWidget *parent);

// Asks "Quit without saving?" with `reason` (why the changes are not saved); "Quit Without
// Saving" calls `quit`, Cancel does nothing. Not modal to the application; a question already
// open is raised instead of asking twice. Returns the question (deleted on close).
QMessageBox *askQuitWithoutSaving(QWidget *parent, const QString &reason, std::function<void()> quit);

// A blocking alert with one button, for a start that cannot go on (no window exists yet):
// another copy runs and did not answer, or the data folder cannot be used.
void showStartAlert(const QString &title, const QString &text);

} // namespace Dialogs

} // namespace tock
