// A button drawn from the theme: a key with a glyph (play, reset, window boxes), the primary
// add key, or a key with a text label (banner and toast buttons). It reports clicks; its owner
// turns them into model calls.
#pragma once

#include "buttonview.h"
#include "glyph.h"

#include <optional>

namespace tock {

class ThemedButton : public ButtonView {
    Q_OBJECT
public:
    enum class Role { key, running, primary };

    ThemedButton(AppModel *model, QWidget *parent, Role role = Role::key);
    // Room a key needs beyond its face for its hard shadow or lip, in unzoomed points.
    static qreal shadowRoom(const Theme &theme);

    void setRole(Role role);
    void setGlyph(std::optional<Glyph> glyph);
    void setText(const QString &text);
    // The row the button sits in, for themes whose running key takes the row's tint.
    void setRowIndex(int index);
    // Multiplies everything drawn, for views that fade.
    void setOpacity(qreal opacity);
    // The size the button wants in unzoomed points.
    QSizeF preferredSize() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    bool isWord() const;
    QString label() const; // the text as drawn: cased, bracketed where words are
    Role role_;
    std::optional<Glyph> glyph_;
    QString text_;
    qreal opacity_ = 1;
    int rowIndex_ = 0;
};

} // namespace tock
