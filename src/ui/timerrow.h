// One timer's row: name, time, play/pause and reset, with the delete button a swipe uncovers
// underneath. The row's face slides by the model's row offset, animated; hovering reports the
// row to the model and a right click offers "Reset" and "Delete Timer".
#pragma once

#include "draw.h"
#include "themedbutton.h"
#include "view.h"

#include <QUuid>

class QVariantAnimation;

namespace tock {

class DeleteReveal;
class EditMask;
class LeaderDots;
class LiveTimeButton;
class NameField;
struct ViewContext;

class TimerRow : public View {
    Q_OBJECT
    Q_PROPERTY(qreal offset READ offset WRITE setOffset)
public:
    TimerRow(AppModel *model, const ViewContext &context, QWidget *parent, QUuid id);
    ~TimerRow() override;

    const QUuid &id() const { return id_; }
    // The row's position in the board (for tints and separators) and whether it is last.
    void setPlace(int index, bool isLast);
    int index() const { return index_; }

    // Height of the row's widget in unzoomed points (the card plus room for its shadow).
    static qreal widgetHeight(const Theme &theme);

    // The model's row offset changed: slides there with the swipe's timing.
    void followOffset(bool animated);
    qreal offset() const { return offset_; }
    void setOffset(qreal offset);

    // The card's colour now (its place's tint, hover, edit).
    QColor cardFill() const;

    // Something about this row changed (the timer, hover, edit, style): redraw and re-place.
    void refresh();
    void relayout();

    LiveTimeButton *timeButton() const { return time_; }
    ThemedButton *playButton() const { return play_; }
    ThemedButton *resetButton() const { return reset_; }
    DeleteReveal *deleteReveal() const { return reveal_; }
    NameField *nameField() const { return name_; }
    QWidget *face() const { return face_; }

    // The row's controls in Tab order: name, time (not while the mask has the keys),
    // start/pause, reset.
    QList<QWidget *> focusControls() const;
    // Which of name, time, start/pause and reset `widget` is (0 to 3), or -1; and back.
    int controlKind(const QWidget *widget) const;
    QWidget *control(int kind) const;
    // What a screen reader calls the row: its timer's name (or "Untitled") and its time.
    QString accessibleLabel() const;
    // The row's parts as a screen reader lists them, the sliding face left out.
    QList<QWidget *> accessibleChildren() const;
    // Offers "Reset" and "Delete Timer" at `globalPos`.
    void showMenu(const QPoint &globalPos);

protected:
    void resizeEvent(QResizeEvent *event) override;
    void enterEvent(QEnterEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    friend class RowFace;
    QRectF cardRect() const; // in the face's unzoomed points
    QString shownName() const;
    void followEdit(); // shows or drops the time mask
    QUuid id_;
    int index_ = 0;
    bool isLast_ = false;
    qreal offset_ = 0;
    DeleteReveal *reveal_;
    View *face_;
    NameField *name_;
    EditMask *mask_ = nullptr;
    bool maskFromKeys_ = false; // opened on the focused time: the focus comes back to it
    LeaderDots *dots_;
    LiveTimeButton *time_;
    ThemedButton *play_;
    ThemedButton *reset_;
    QVariantAnimation *slide_ = nullptr;
};

} // namespace tock
