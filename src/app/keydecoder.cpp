#include "keydecoder.h"

namespace tock {

namespace {

using Key = KeyEvent::Key;

constexpr char escape = '\x1b';
const QByteArray pasteEnd = QByteArrayLiteral("\x1b[201~");

// A CSI sequence that never ends is noise, not a key still arriving.
constexpr qsizetype longestSequence = 32;

std::optional<Key> controlKey(char byte)
{
    switch (byte) {
    case '\r':
    case '\n':
        return Key::enter;
    case '\t':
        return Key::tab;
    case '\x7f':
    case '\x08':
        return Key::backspace;
    case '\x01':
        return Key::home;
    case '\x05':
        return Key::end;
    case '\x02':
        return Key::left;
    case '\x06':
        return Key::right;
    case '\x10':
        return Key::up;
    case '\x0e':
        return Key::down;
    case '\x15':
        return Key::clearLine;
    case '\x03':
        return Key::interrupt;
    case '\x0c':
        return Key::clearScreen;
    case '\x04':
        return Key::endOfInput;
    default:
        return std::nullopt;
    }
}

std::optional<Key> finalKey(char final)
{
    switch (final) {
    case 'A':
        return Key::up;
    case 'B':
        return Key::down;
    case 'C':
        return Key::right;
    case 'D':
        return Key::left;
    case 'H':
        return Key::home;
    case 'F':
        return Key::end;
    default:
        return std::nullopt;
    }
}

std::optional<Key> tildeKey(int number)
{
    switch (number) {
    case 1:
    case 7:
        return Key::home;
    case 4:
    case 8:
        return Key::end;
    case 3:
        return Key::forwardDelete;
    default:
        return std::nullopt;
    }
}

// Bytes in a UTF-8 character starting with `lead`; 0 when it cannot start one.
int utf8Length(unsigned char lead)
{
    if (lead >= 0xc2 && lead <= 0xdf)
        return 2;
    if (lead >= 0xe0 && lead <= 0xef)
        return 3;
    if (lead >= 0xf0 && lead <= 0xf4)
        return 4;
    return 0;
}

} // namespace

void KeyDecoder::addText(QList<KeyEvent> &keys, const QString &text)
{
    if (text.isEmpty())
        return;
    if (!keys.isEmpty() && keys.last().key == Key::text)
        keys.last().text += text;
    else
        keys.append(KeyEvent{Key::text, text});
}

QList<KeyEvent> KeyDecoder::feed(QByteArrayView bytes)
{
    pending_.append(bytes);
    QList<KeyEvent> keys;
    while (!pending_.isEmpty()) {
        if (pasting_) {
            const qsizetype end = pending_.indexOf(pasteEnd);
            if (end < 0) {
                // The end marker may be split: keep a tail that could be its start.
                const qsizetype keep = std::min(pending_.size(), pasteEnd.size() - 1);
                paste_.append(pending_.left(pending_.size() - keep));
                pending_.remove(0, pending_.size() - keep);
                break;
            }
            paste_.append(pending_.left(end));
            pending_.remove(0, end + pasteEnd.size());
            pasting_ = false;
            addText(keys, QString::fromUtf8(std::exchange(paste_, {})));
            continue;
        }
        const qsizetype used = decodeOne(keys);
        if (used == 0)
            break;
        pending_.remove(0, used);
    }
    return keys;
}

qsizetype KeyDecoder::decodeOne(QList<KeyEvent> &keys)
{
    const auto byte = static_cast<unsigned char>(pending_.at(0));
    if (byte == escape) {
        if (pending_.size() < 2)
            return 0;
        const char kind = pending_.at(1);
        if (kind == 'O') {
            if (pending_.size() < 3)
                return 0;
            if (const std::optional<Key> key = finalKey(pending_.at(2)))
                keys.append(KeyEvent{*key, {}});
            return 3;
        }
        if (kind != '[')
            return 1; // a lone Escape or an Alt chord: the escape itself means nothing here
        qsizetype i = 2;
        while (i < pending_.size() && pending_.at(i) >= 0x20 && pending_.at(i) <= 0x3f)
            ++i;
        if (i == pending_.size())
            return pending_.size() >= longestSequence ? 1 : 0;
        const char final = pending_.at(i);
        if (final < 0x40 || final > 0x7e)
            return 1;
        if (final == '~') {
            // Only the first parameter names the key; the rest are modifiers.
            const int number = pending_.mid(2, i - 2).split(';').value(0).toInt();
            if (number == 200)
                pasting_ = true;
            else if (const std::optional<Key> key = tildeKey(number))
                keys.append(KeyEvent{*key, {}});
        } else if (const std::optional<Key> key = finalKey(final)) {
            keys.append(KeyEvent{*key, {}});
        }
        return i + 1;
    }
    // Return sent as carriage return and line feed is one key, even when the two come apart.
    const bool afterReturn = std::exchange(afterReturn_, byte == '\r');
    if (byte == '\n' && afterReturn)
        return 1;
    if (byte < 0x20 || byte == 0x7f) {
        if (const std::optional<Key> key = controlKey(char(byte)))
            keys.append(KeyEvent{*key, {}});
        return 1;
    }
    if (byte < 0x80) {
        addText(keys, QString(QChar(byte)));
        return 1;
    }
    const int length = utf8Length(byte);
    if (length == 0)
        return 1; // a stray continuation or an invalid lead byte
    if (pending_.size() < length) {
        for (qsizetype i = 1; i < pending_.size(); ++i)
            if ((static_cast<unsigned char>(pending_.at(i)) & 0xc0) != 0x80)
                return 1;
        return 0;
    }
    for (int i = 1; i < length; ++i)
        if ((static_cast<unsigned char>(pending_.at(i)) & 0xc0) != 0x80)
            return 1;
    addText(keys, QString::fromUtf8(pending_.constData(), length));
    return length;
}

} // namespace tock
