// A timer's name in its row: one elided line that starts a rename when clicked, and while
// renaming a plain single-line text field styled from the theme. The rename reaches the board
// only through the model.
#pragma once

#include <QPointer>
#include <QUuid>
#include <QWidget>

#include <optional>

class QLineEdit;

namespace tock {

class AppModel;
class CursorBlink;
class NameLineEdit;
struct Theme;

class NameField : public QWidget {
    Q_OBJECT
public:
    // Names longer than this are cut before they are measured: eliding a huge name must stay
    // cheap, and no row is wide enough to show this many characters anyway.
    static constexpr qsizetype measureCap = 400;

    NameField(AppModel *model, QUuid id, QWidget *parent = nullptr);
    ~NameField() override;

    // Takes the theme and zoom from the model again (its style or zoom changed).
    void restyle();
    // The board's name; while renaming, what the user typed is kept.
    void setName(const QString &name);
    const QString &name() const { return name_; }
    QUuid id() const { return id_; }

    bool isEditing() const { return editor_ != nullptr; }
    // Starts renaming without asking the model (the caller has); focuses the text field.
    void beginEditing();
    // Starts renaming as a click does: an open time edit is committed first, and an invalid
    // one keeps the name as it is.
    void rename();
    // Ends renaming: commit passes the text to the model, otherwise the old name stays.
    enum class End { commit, cancel };
    void endEditing(End end);
    QLineEdit *editor() const;
    // The text drawn when not editing: cased, elided to the width, or "Untitled".
    QString shownText() const;
    bool isHovered() const { return hover_; }
    // Draws a block caret as in an active or inactive window whatever the real state, for
    // rendering scenes offscreen; absent follows the window.
    void setPaintsActive(std::optional<bool> active);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    // F2, Return and Space rename, as a click does.
    void keyPressEvent(QKeyEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QFont nameFont() const;
    QRectF fieldRect() const; // in points
    qreal padH() const;
    void relayout();
    void styleEditor();
    void takeNameFocus();
    void updateBlinking();

    QPointer<AppModel> model_; // may go first at shutdown
    QUuid id_;
    const Theme *theme_ = nullptr;
    qreal zoom_ = 1.0;
    QString name_;
    QString elided_; // cached: recomputed when the name, width, theme or zoom change
    bool hover_ = false;
    NameLineEdit *editor_ = nullptr;
    bool fromKeys_ = false; // renaming began on the focused name: the focus comes back to it
    CursorBlink *blink_;
    std::optional<bool> paintsActive_;

    friend class NameLineEdit;
};

} // namespace tock
