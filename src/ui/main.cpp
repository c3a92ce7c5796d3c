#include "appinfo.h"

#include <QTextStream>

int main()
{
    QTextStream out(stdout);
    out << tock::AppInfo::name().toLower() << ' ' << tock::AppInfo::versionLine() << " · "
        << tock::AppInfo::tagline().toLower() << '\n'
        << "The window and the terminal mode are still being built; scripts/test runs what exists.\n";
    return 0;
}
