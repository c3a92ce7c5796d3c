// The terminal's keys and line: the key decoder over byte strings as terminals send them, whole
// and byte by byte; the prompt line's bytes: columns for wide and combined characters, the cursor
// at the caret, and sideways scrolling when the line is wider than the terminal.
#include "keydecoder.h"
#include "lineeditor.h"
#include "table.h"

#include <QTest>

using namespace tock;
using Key = KeyEvent::Key;

namespace {

KeyEvent key(Key k)
{
    return KeyEvent{k, {}};
}

KeyEvent text(const char *utf8)
{
    return KeyEvent{Key::text, QString::fromUtf8(utf8)};
}

QString describe(const QList<KeyEvent> &keys)
{
    QStringList parts;
    for (const KeyEvent &k : keys)
        parts << QString::number(int(k.key)) + (k.text.isEmpty() ? QString() : QLatin1Char(':') + k.text);
    return parts.join(QLatin1Char(' '));
}

// Adjacent text keys are one key however the bytes were cut, so compare merged.
QList<KeyEvent> merged(const QList<KeyEvent> &keys)
{
    QList<KeyEvent> result;
    for (const KeyEvent &k : keys) {
        if (k.key == Key::text && !result.isEmpty() && result.last().key == Key::text)
            result.last().text += k.text;
        else
            result << k;
    }
    return result;
}

} // namespace

class KeyDecoderTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void decodes_data()
    {
        table<QString, QByteArray, QList<KeyEvent>>({"case", "bytes", "keys"}, {
            {"plain text", QByteArray("add x"), QList{text("add x")}},
            {"return, both forms", QByteArray("a\rb\nc\r\n"),
             QList{text("a"), key(Key::enter), text("b"), key(Key::enter), text("c"), key(Key::enter)}},
            {"controls", QByteArray("\t\x7f\x08\x01\x05\x15\x03\x0c\x04"),
             QList{key(Key::tab), key(Key::backspace), key(Key::backspace), key(Key::home), key(Key::end),
                   key(Key::clearLine), key(Key::interrupt), key(Key::clearScreen), key(Key::endOfInput)}},
            {"CSI arrows", QByteArray("\x1b[A\x1b[B\x1b[C\x1b[D"), QList{key(Key::up), key(Key::down), key(Key::right), key(Key::left)}},
            {"SS3 arrows and home/end", QByteArray("\x1bOA\x1bOD\x1bOH\x1bOF"), QList{key(Key::up), key(Key::left), key(Key::home), key(Key::end)}},
            {"CSI home/end", QByteArray("\x1b[H\x1b[F\x1b[1~\x1b[4~\x1b[7~\x1b[8~"),
             QList{key(Key::home), key(Key::end), key(Key::home), key(Key::end), key(Key::home), key(Key::end)}},
            {"delete, also with a modifier", QByteArray("\x1b[3~\x1b[3;5~"), QList{key(Key::forwardDelete), key(Key::forwardDelete)}},
            {"modified arrow is the arrow", QByteArray("\x1b[1;5C"), QList{key(Key::right)}},
            {"unknown sequences vanish", QByteArray("a\x1b[15~\x1b[Zb\x1bOPc"), QList{text("abc")}},
            {"alt chord drops the escape", QByteArray("\x1bx"), QList{text("x")}},
            {"UTF-8", QByteArray("caf\xc3\xa9 \xe6\x99\x82 \xf0\x9f\x98\x80"), QList{text("café 時 😀")}},
            {"invalid UTF-8 is skipped", QByteArray("a\x80\xff\xc3z"), QList{text("az")}},
            {"bracketed paste is text", QByteArray("x\x1b[200~one\r\ntwo\t\x1b[3~\x1b[201~\r"), QList{text("xone\r\ntwo\t\x1b[3~"), key(Key::enter)}},
        });
    }

    // The same keys whether the bytes come at once or one by one.
    void decodes()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QList<KeyEvent>, keys);
        KeyDecoder whole, single;
        QCOMPARE(describe(merged(whole.feed(bytes))), describe(keys));
        QVERIFY(!whole.hasPending());
        QList<KeyEvent> got;
        for (const char byte : bytes)
            got << single.feed(QByteArrayView(&byte, 1));
        QCOMPARE(describe(merged(got)), describe(keys));
    }

    // A sequence that never ends does not hold back the typing after it.
    void endlessSequenceIsDropped()
    {
        KeyDecoder decoder;
        const QList<KeyEvent> keys = decoder.feed(QByteArray("\x1b[") + QByteArray(40, '1'));
        QCOMPARE(describe(merged(keys)), describe({KeyEvent{Key::text, QLatin1Char('[') + QString(40, QLatin1Char('1'))}}));
        QVERIFY(!decoder.hasPending());
    }

    void widths_data()
    {
        table<QString, QString, int>({"case", "text", "columns"}, {
            {"accent, precomposed and combining", QStringLiteral("café cafe\u0301"), 9},
            {"CJK", QStringLiteral("会議"), 4},
            {"emoji", QStringLiteral("😀🚀"), 4},
            {"emoji with skin tone is one", QStringLiteral("👍🏽"), 2},
            {"family is one", QStringLiteral("👨‍👩‍👧"), 2},
            {"flag", QStringLiteral("🇯🇵"), 2},
            {"symbol asking for emoji", QStringLiteral("❤️"), 2},
            {"plain symbol", QStringLiteral("❤ ·"), 3},
        });
    }
    void widths()
    {
        QFETCH(QString, text);
        QTEST(LineEditor::width(text), "columns");
    }

    void render_data()
    {
        table<QString, QString, int, int, QByteArray>({"case", "text", "caret", "columns", "bytes"}, {
            {"empty", QString(), 0, 80, QByteArray("\r> \x1b[K\r\x1b[2C")},
            {"caret at end", QStringLiteral("add"), 3, 80, QByteArray("\r> add\x1b[K\r\x1b[5C")},
            {"caret inside", QStringLiteral("add"), 1, 80, QByteArray("\r> add\x1b[K\r\x1b[3C")},
            {"caret beyond the end is clamped", QStringLiteral("ab"), 9, 80, QByteArray("\r> ab\x1b[K\r\x1b[4C")},
            {"after wide characters", QStringLiteral("会議x"), 2, 80, QByteArray("\r> 会議x\x1b[K\r\x1b[6C")},
            // 10 columns: prompt 2, room 7 (the last column stays free).
            {"long line, caret at start", QStringLiteral("abcdefghij"), 0, 10, QByteArray("\r> abcdefg\x1b[K\r\x1b[2C")},
            {"long line, caret at end scrolls", QStringLiteral("abcdefghij"), 10, 10, QByteArray("\r> defghij\x1b[K\r\x1b[9C")},
            {"wide character never split", QStringLiteral("会議会議会議"), 6, 10, QByteArray("\r> 議会議\x1b[K\r\x1b[8C")},
            {"unknown width never scrolls", QStringLiteral("abcdefghij"), 10, 0, QByteArray("\r> abcdefghij\x1b[K\r\x1b[12C")},
        });
    }
    void render()
    {
        QFETCH(QString, text);
        QFETCH(int, caret);
        QFETCH(int, columns);
        QTEST(LineEditor::render(QStringLiteral("> "), text, caret, columns), "bytes");
    }
};

QTEST_APPLESS_MAIN(KeyDecoderTest)
#include "keydecoder_test.moc"
