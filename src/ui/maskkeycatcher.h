// The invisible widget that holds the keyboard focus while a time mask is open and hands every
// key to the mask first; keys the mask does not take travel on to the parent widgets.
#pragma once

#include <QWidget>

#include <functional>

namespace tock {

class MaskKeyCatcher : public QWidget {
    Q_OBJECT
public:
    // True: the key was consumed.
    using KeyHandler = std::function<bool(QKeyEvent *)>;
    // Whether the handler would consume the key; asked before shortcuts are matched.
    using KeyFilter = std::function<bool(const QKeyEvent *)>;

    explicit MaskKeyCatcher(QWidget *parent = nullptr);

    void setOnKey(KeyHandler handler) { onKey_ = std::move(handler); }
    void setWantsKey(KeyFilter filter) { wantsKey_ = std::move(filter); }
    // Any change takes the focus again at once.
    void setToken(quint64 token);
    quint64 token() const { return token_; }

Q_SIGNALS:
    void focusChanged(bool hasFocus);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void showEvent(QShowEvent *event) override;
    // Tab and Backtab are keys of the mask, not focus moves.
    bool focusNextPrevChild(bool) override { return false; }

private:
    KeyHandler onKey_;
    KeyFilter wantsKey_;
    quint64 token_ = 0;
};

} // namespace tock
