// The prompt line's bytes: columns for wide and combined characters, the cursor at the caret,
// and sideways scrolling when the line is wider than the terminal.
#include "lineeditor.h"
#include "table.h"

#include <QTest>

using namespace tock;

class LineEditorTest : public QObject {
    Q_OBJECT

private Q_SLOTS:
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
            {"after an emoji cluster", QStringLiteral("👍🏽a"), 1, 80, QByteArray("\r> 👍🏽a\x1b[K\r\x1b[4C")},
            {"after a combining accent", QStringLiteral("e\u0301x"), 1, 80, QByteArray("\r> e\u0301x\x1b[K\r\x1b[3C")},
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

QTEST_APPLESS_MAIN(LineEditorTest)
#include "lineeditor_test.moc"
