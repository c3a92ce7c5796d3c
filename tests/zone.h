// A test main() that fixes the time zone before Qt or the C library look at it, so days of 23
// and 25 hours fall on known dates. `Application` is QCoreApplication or QApplication.
#pragma once

#include <QTest>

#include <ctime>

#define TOCK_TEST_MAIN_IN_ZONE(TestClass, Application, zone) \
    int main(int argc, char **argv)                          \
    {                                                        \
        qputenv("TZ", zone);                                 \
        tzset();                                             \
        Application app(argc, argv);                         \
        TestClass test;                                      \
        return QTest::qExec(&test, argc, argv);              \
    }
