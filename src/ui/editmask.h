// The in-row time editor: the open draft as hours, minutes and seconds fields separated by
// colons. It owns only the cursor; the draft lives in the model and every key goes through it.
#pragma once

#include "digitfield.h"
#include "timeedit.h"

#include <QWidget>

#include <array>
#include <functional>
#include <optional>

namespace tock {

class AppModel;
class CursorBlink;
class MaskKeyCatcher;
struct Theme;

class EditMask : public QWidget {
    Q_OBJECT
public:
    // What a key does to the mask; notHandled keys travel on (menu shortcuts, for one).
    enum class KeyAction { notHandled, commit, cancel, next, previous, stepUp, stepDown, backspace, type };

    EditMask(AppModel *model, QWidget *parent = nullptr);
    ~EditMask() override;

    // Takes the theme and zoom from the model again (its style or zoom changed).
    void restyle();
    const Theme *theme() const { return theme_; }
    qreal zoom() const { return zoom_; }
    AppModel *model() const { return model_; }
    // Where `field`'s box is drawn, in this widget's pixels.
    QRect fieldRect(TimeField field) const { return toWidget(fieldBox(field)); }

    const MaskCursor &maskCursor() const { return cursor_; }
    void setMaskCursor(const MaskCursor &cursor);
    // Draws the caret as in an active (solid) or inactive (hollow) window whatever the real
    // state, for rendering scenes offscreen; absent follows the window (a mask rendered without
    // being shown draws as active).
    void setPaintsActive(std::optional<bool> active);
    // Makes the key catcher take the keyboard focus again.
    void refocus();
    MaskKeyCatcher *keyCatcher() const { return catcher_; }

    static KeyAction classify(const QKeyEvent &event);
    // Applies one key; true when consumed.
    bool handleKey(QKeyEvent *event);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

Q_SIGNALS:
    // A typed key was refused (nothing in it fits the mask); the system beep has sounded.
    void beeped();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void showEvent(QShowEvent *event) override;

private:
    // Tells a screen reader that the keys now go to the current field.
    void tellFieldFocused();
    // Layout in points, before zoom.
    QSizeF contentSize() const;
    QRectF fieldBox(TimeField field) const;
    QRectF colonBox(int index) const; // 0: after hours, 1: after minutes
    QRect toWidget(const QRectF &points) const;

    DigitField fieldState(TimeField field) const;
    int caretCell(TimeField field, const QString &text) const;
    void editDraft(const std::function<void(TimeEditDraft &)> &edit);
    void changeCursor(const MaskCursor &cursor);
    void updateBlinking();
    // Repaints the fields whose look differs from what was last painted.
    void repaintChanged();
    void onEditOpened();

    AppModel *model_;
    const Theme *theme_ = nullptr;
    qreal zoom_ = 1.0;
    MaskCursor cursor_;
    MaskKeyCatcher *catcher_;
    CursorBlink *blink_;
    quint64 token_ = 0;
    std::optional<bool> paintsActive_;
    std::array<DigitField, 3> painted_; // what each box showed at the last repaint request
};

} // namespace tock
