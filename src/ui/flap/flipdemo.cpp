#include "flipdemo.h"

#include "flapclock.h"
#include "flaptext.h"

#include <QApplication>
#include <QLabel>
#include <QShortcut>
#include <QTime>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace tock {

namespace {

const QColor body(0x17, 0x17, 0x17);
const QColor label(0xBD, 0xB7, 0xA8);
const QColor yellow(0xF2, 0xC2, 0x30);

// The seven styles as the style menu names them.
const QStringList styleNames = {
    QStringLiteral("Neo Classic"),    QStringLiteral("Neo Color"),  QStringLiteral("Play Kid"),
    QStringLiteral("Calculator"),     QStringLiteral("Amber Terminal"), QStringLiteral("Split-Flap"),
    QStringLiteral("Shell"),
};

QLabel *caption(const QString &text, const QColor &ink, QWidget *parent)
{
    auto *l = new QLabel(text, parent);
    QFont font = FlapStyle::board().font;
    font.setPixelSize(12);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 1.5);
    l->setFont(font);
    QPalette palette = l->palette();
    palette.setColor(QPalette::WindowText, ink);
    l->setPalette(palette);
    return l;
}

class FlipDemoWindow final : public QWidget {
public:
    FlipDemoWindow()
    {
        setWindowTitle(QStringLiteral("Tock — Split-Flap"));
        setAutoFillBackground(true);
        QPalette palette = this->palette();
        palette.setColor(QPalette::Window, body);
        setPalette(palette);

        FlapStyle big = FlapStyle::board();
        big.tileSize = {46, 68};
        big.radius = 5;
        big.gap = 4;
        big.separatorWidth = 14;
        time_ = new FlapText(&clock_, this);
        time_->setStyle(big);

        FlapStyle small = FlapStyle::board();
        small.tileSize = {24, 36};
        small.gap = 3;
        words_ = new FlapText(&clock_, this);
        words_->setStyle(small);

        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(22, 18, 22, 22);
        layout->setSpacing(6);
        layout->addWidget(caption(QStringLiteral("TOCK"), yellow, this));
        layout->addSpacing(6);
        layout->addWidget(caption(QStringLiteral("NOW"), label, this));
        layout->addWidget(time_);
        layout->addSpacing(10);
        layout->addWidget(caption(QStringLiteral("STYLE"), label, this));
        layout->addWidget(words_);
        layout->setSizeConstraint(QLayout::SetFixedSize);

        // Closing with the keyboard too: the window may have no frame to click.
        for (const QKeySequence &keys : {QKeySequence(QKeySequence::Close), QKeySequence(QKeySequence::Quit),
                                         QKeySequence(Qt::Key_Escape)})
            connect(new QShortcut(keys, this), &QShortcut::activated, this, &QWidget::close);

        showTime();
        showWord();

        // Each change waits until the last flip has landed and been seen for a moment.
        const double wordSeconds = std::max(3.0, clock_.settleDelay() + 1.5);
        wordTimer_.start(int(wordSeconds * 1000));
        connect(&wordTimer_, &QTimer::timeout, this, [this] { showWord(); });
        secondTimer_.setSingleShot(true);
        secondTimer_.setTimerType(Qt::PreciseTimer);
        connect(&secondTimer_, &QTimer::timeout, this, [this] { showTime(); });
    }

private:
    void showTime()
    {
        const QTime now = QTime::currentTime();
        time_->setText(now.toString(QStringLiteral("HH:mm:ss")));
        // Just past a whole second, so the display is never late; slowed flips are given whole
        // seconds enough to land before the next change.
        const int seconds = std::max(1, int(std::ceil(clock_.settleDelay() + 0.1)));
        secondTimer_.start(seconds * 1000 - now.msec() + 5);
    }

    void showWord()
    {
        const QString name = styleNames.at(next_ % styleNames.size()).toUpper();
        next_ = (next_ + 1) % styleNames.size();
        words_->setText(name.leftJustified(width_, QLatin1Char(' ')));
    }

    FlapClock clock_;
    FlapText *time_ = nullptr;
    FlapText *words_ = nullptr;
    QTimer secondTimer_;
    QTimer wordTimer_;
    qsizetype next_ = 0;
    const qsizetype width_ = std::max_element(styleNames.begin(), styleNames.end(),
                                              [](const QString &a, const QString &b) {
                                                  return a.size() < b.size();
                                              })->size();
};

} // namespace

int runFlipDemo()
{
    FlipDemoWindow window;
    window.show();
    return QApplication::exec();
}

} // namespace tock
