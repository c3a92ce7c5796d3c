#include "fontloader.h"

#include <QFontDatabase>
#include <QGuiApplication>
#include <QtMath>

namespace tock {

namespace {

// Resource paths of the faces, compiled in uncompressed so Qt maps them instead of copying.
const char *const bundledFiles[] = {
    ":/fonts/TockPixel.ttf",
    ":/fonts/TockTerm.ttf",
    ":/fonts/RobotoCondensed-Bold.ttf",
    ":/fonts/Roboto-Medium.ttf",
    ":/fonts/Roboto-Bold.ttf",
};

bool registerAll()
{
    bool all = true;
    for (const char *file : bundledFiles) {
        if (QFontDatabase::addApplicationFont(QString::fromLatin1(file)) < 0) {
            qWarning("Tock could not load its font %s", file);
            all = false;
        }
    }
    return all;
}

} // namespace

const QStringList &FontLoader::bundledFamilies()
{
    static const QStringList families{
        QStringLiteral("TockPixel"),
        QStringLiteral("TockTerm"),
        QStringLiteral("Roboto Condensed"),
        QStringLiteral("Roboto"),
    };
    return families;
}

bool FontLoader::registerBundledFonts()
{
    // The font database belongs to the GUI application; the terminal modes have none.
    if (!qobject_cast<QGuiApplication *>(QCoreApplication::instance()))
        return false;
    static const bool loaded = registerAll();
    return loaded;
}

QFont FontLoader::font(const QStringList &families, qreal pixelSize, QFont::Weight weight)
{
    registerBundledFonts();
    QStringList installed;
    for (const QString &family : families) {
        if (QFontDatabase::hasFamily(family))
            installed.append(family);
    }
    QFont result;
    if (!installed.isEmpty())
        result.setFamilies(installed);
    result.setPixelSize(std::max(1, qRound(pixelSize)));
    result.setWeight(weight);
    return result;
}

namespace {
QtMessageHandler previousHandler = nullptr;

void filterMessages(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message.trimmed().startsWith(QLatin1String("OpenType support missing for")))
        return;
    if (previousHandler)
        previousHandler(type, context, message);
}
} // namespace

void FontLoader::quietMissingScriptWarnings()
{
    static const bool installed = [] {
        previousHandler = qInstallMessageHandler(filterMessages);
        return true;
    }();
    Q_UNUSED(installed);
}

} // namespace tock
