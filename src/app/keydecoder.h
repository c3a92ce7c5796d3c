// Turns the bytes a terminal sends into prompt keys, a chunk at a time: escape sequences and
// UTF-8 characters may arrive split across reads, so whatever is incomplete waits for the next
// chunk. Pure: no I/O, no terminal state.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

namespace tock {

struct KeyEvent {
    enum class Key {
        text, // `text` holds typed or pasted characters
        enter,
        tab,
        backspace,
        forwardDelete,
        left,
        right,
        up,
        down,
        home,
        end,
        clearLine,   // Ctrl-U
        interrupt,   // Ctrl-C
        clearScreen, // Ctrl-L
        endOfInput,  // Ctrl-D
    };
    Key key = Key::text;
    QString text;

    bool operator==(const KeyEvent &) const = default;
};

class KeyDecoder {
public:
    // The keys completed by `bytes`; an unfinished sequence at the end is kept for the next call.
    QList<KeyEvent> feed(QByteArrayView bytes);
    // Bytes held back waiting for the rest of a sequence or character.
    bool hasPending() const { return !pending_.isEmpty(); }

private:
    // Decodes one key at the front of pending_; returns the bytes it used, 0 when incomplete.
    qsizetype decodeOne(QList<KeyEvent> &keys);
    void addText(QList<KeyEvent> &keys, const QString &text);

    QByteArray pending_;
    bool pasting_ = false;
    bool afterReturn_ = false; // a line feed right after a carriage return is the same Return
    QByteArray paste_;
};

} // namespace tock
