// Keys written as words, for the tests that type at real widgets.
#pragma once

#include <QApplication>
#include <QHash>
#include <QString>
#include <QTest>

namespace tock::testing {

#ifdef Q_OS_MACOS
inline constexpr Qt::KeyboardModifier promptControl = Qt::MetaModifier;
#else
inline constexpr Qt::KeyboardModifier promptControl = Qt::ControlModifier;
#endif

struct Press {
    int key = 0;
    Qt::KeyboardModifiers mods;
    QString text;
};

// "C-" is the prompt's Control, "M-" the menus' key, "A-" Option/Alt, "S-" Shift; then a named
// key or the characters typed.
inline Press parsePress(QString word)
{
    Press p;
    for (;;) {
        if (word.startsWith("C-"))
            p.mods |= promptControl;
        else if (word.startsWith("M-"))
            p.mods |= Qt::ControlModifier;
        else if (word.startsWith("A-"))
            p.mods |= Qt::AltModifier;
        else if (word.startsWith("S-"))
            p.mods |= Qt::ShiftModifier;
        else
            break;
        word = word.mid(2);
    }
    static const QHash<QString, std::pair<int, QString>> named{
        {"Ret", {Qt::Key_Return, "\r"}}, {"Enter", {Qt::Key_Enter, "\r"}}, {"Tab", {Qt::Key_Tab, "\t"}},
        {"BS", {Qt::Key_Backspace, "\b"}}, {"Del", {Qt::Key_Delete, "\x7f"}}, {"Esc", {Qt::Key_Escape, "\x1b"}},
        {"Home", {Qt::Key_Home, ""}},     {"End", {Qt::Key_End, ""}},     {"Left", {Qt::Key_Left, ""}},
        {"Right", {Qt::Key_Right, ""}},   {"Up", {Qt::Key_Up, ""}},       {"Down", {Qt::Key_Down, ""}},
        {"F1", {Qt::Key_F1, QString(QChar(0xF704))}}, {"Ctl", {Qt::Key_unknown, "\x01"}},
        {"BTab", {Qt::Key_Backtab, ""}},
    };
    if (named.contains(word)) {
        p.key = named.value(word).first;
        p.text = named.value(word).second;
        if (word == "Enter")
            p.mods |= Qt::KeypadModifier;
    } else {
        p.key = word.size() == 1 && word.at(0).isLetter() ? Qt::Key_A + (word.at(0).toUpper().unicode() - 'A')
                                                          : Qt::Key_unknown;
        // A chord's characters are control characters or none; plain keys type themselves.
        p.text = p.mods & (Qt::ControlModifier | Qt::MetaModifier) ? QString() : word;
    }
    return p;
}

// Types each word of `keys` (split at spaces) at the focused widget, or `fallback` when none has
// focus; a word that is no key of its own is typed as its character.
inline void typeKeys(const QString &keys, QWidget *fallback = nullptr)
{
    for (const QString &word : keys.split(u' ')) {
        const Press p = parsePress(word);
        QWidget *target = QApplication::focusWidget() ? QApplication::focusWidget() : fallback;
        if (p.key == Qt::Key_unknown && p.text.size() == 1 && p.text.at(0).unicode() < 0x80)
            QTest::keyClick(target, p.text.at(0).toLatin1(), p.mods);
        else
            QTest::keyClick(target, Qt::Key(p.key), p.mods);
    }
}

} // namespace tock::testing
