// The model's shell session: the prompt line being typed (its caret counts user-perceived
// characters), the command history and the last output. A line runs through the same model
// operations the mouse uses, so undo, toasts, ticking and saving behave exactly as for the
// window's buttons. The window's prompt, the terminal and the control socket all run lines
// through `run`.
#pragma once

#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

namespace tock {

class AppModel;
class ShellHistory;
struct ShellCommand;

class ShellSession : public QObject {
    Q_OBJECT
public:
    // What one line produced: its output lines (error lines when `failed`); `exit` when the
    // line was `exit`, which each caller answers its own way.
    struct Result {
        QStringList lines;
        bool failed = false;
        bool exit = false;
        bool operator==(const Result &) const = default;
    };

    // Made by the model, which it serves; `history` is what the settings remembered.
    ShellSession(AppModel &model, const QStringList &history);
    ~ShellSession() override;

    const QString &promptText() const { return promptText_; }
    qsizetype promptCaret() const { return promptCaret_; }
    const QStringList &shellOutput() const { return shellOutput_; }
    bool shellOutputIsError() const { return shellOutputIsError_; }
    const ShellHistory &history() const { return *history_; }

    // Runs `line` as if typed and Return pressed: records it in the history and shows its
    // output, but leaves the line being typed as it is. A blank line does nothing and prints
    // nothing; a line that prints nothing clears the output. `exit` is not run or remembered,
    // only reported: the window's prompt quits, the terminal ends, a forwarded line ends only
    // its caller.
    Result run(const QString &line);

    // The prompt's keys.
    void promptInsert(const QString &text);
    void promptBackspace();
    void promptForwardDelete();
    void promptMove(qsizetype delta);
    void promptHistory(bool up);
    void promptComplete();
    // Return: runs the typed line and empties the prompt; `exit` asks through exitRequested.
    void promptRun();
    // Prompt keys that clear or move without running (Ctrl-U, Ctrl-L, Home, End).
    void setPrompt(const QString &text, qsizetype caret);
    void clearShellOutput();

    // Timers as the output names them: one by its quoted name, several by their count.
    QString names(const QList<QUuid> &ids) const;
    // The style names `style <name>` accepts: titles lower-cased, spaces as '-'.
    static QStringList styleCommandNames();

Q_SIGNALS:
    void promptTextChanged();
    void promptCaretChanged();
    void shellOutputChanged();
    void shellOutputIsErrorChanged();
    void exitRequested(); // `exit` typed at the prompt

private:
    // Applies one parsed command; throws ShellError.
    void execute(const ShellCommand &command);
    void setShellOutput(QStringList lines, bool isError);

    AppModel &model_;
    std::unique_ptr<ShellHistory> history_;
    QString promptText_;
    qsizetype promptCaret_ = 0;
    QStringList shellOutput_;
    bool shellOutputIsError_ = false;
    bool produced_ = false; // the running line set the output
};

} // namespace tock
