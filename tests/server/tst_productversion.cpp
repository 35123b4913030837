#include "ProductVersion.h"
#include "TempServerDir.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;

// The images come from tests/data/versions (written by make_fixtures.py there)
// and from the build itself, which stamps every executable.
class TestProductVersion : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ownExecutableIsStamped()
    {
        // The empty path is the running executable, linked with the project's note.
        QCOMPARE(GetProductVersion(QString()), QStringLiteral(VELMAR_TEST_PROJECT_VERSION));
        QCOMPARE(GetProductVersion(QStringLiteral(VELMAR_TEST_CONSOLE_PATH)),
            QStringLiteral(VELMAR_TEST_PROJECT_VERSION));
    }

    void fixtures_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QString>("version");
        QTest::newRow("elf note") << u"elf-good"_s << u"3.1.4"_s;
        QTest::newRow("elf note, broken json") << u"elf-bad-json"_s << QString();
        QTest::newRow("elf note, version a number") << u"elf-version-not-text"_s << QString();
        QTest::newRow("elf note longer than its section") << u"elf-desc-too-long"_s << QString();
        QTest::newRow("elf note of another owner") << u"elf-wrong-owner"_s << QString();
        QTest::newRow("elf section table outside the file")
            << u"elf-bad-section-table"_s << QString();
        QTest::newRow("pe version resource") << u"pe-good"_s << u"5.2.0.1"_s;
        QTest::newRow("pe, first translation without it")
            << u"pe-second-translation"_s << u"6.0.3"_s;
        QTest::newRow("pe without translation table") << u"pe-no-translation"_s << QString();
        QTest::newRow("a text file") << u"make_fixtures.py"_s << QString();
        QTest::newRow("missing file") << u"no-such-file"_s << QString();
    }

    void fixtures()
    {
        QFETCH(QString, file);
        QFETCH(QString, version);
        QCOMPARE(GetProductVersion(fixture(file)), version);
    }

    void truncatedImagesHaveNoVersion()
    {
        // Every prefix of a good image is read without reading past its end (the
        // sanitizer build checks that) and never yields a version it does not hold.
        for (const QString &name : { u"elf-good"_s, u"pe-good"_s }) {
            QFile file(fixture(name));
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray image = file.readAll();
            for (qsizetype size = 0; size < image.size(); ++size) {
                const QString version = ProductVersion::fromImage(image.left(size));
                QVERIFY2(version.isEmpty() || version == u"3.1.4"_s || version == u"5.2.0.1"_s,
                    qPrintable(u"%1 cut at %2"_s.arg(name).arg(size)));
            }
            QVERIFY(!ProductVersion::fromImage(image).isEmpty());
        }
    }

    void daemonVersionList()
    {
        TempServerDir dir;
        auto copy = [&dir](const QString &from, const QString &to) {
            return QFile::copy(fixture(from), dir.filePath(to));
        };
        QVERIFY(copy(u"elf-good"_s, u"VelmarD"_s));
        QVERIFY(copy(u"pe-good"_s, u"FileSessionD"_s));
        QVERIFY(copy(u"pe-second-translation"_s, u"VelmarboxServerManager"_s));
        QVERIFY(copy(u"elf-bad-json"_s, u"GroupD"_s));
        // ChatD, RelayD, FileDispatchD and CheckD are missing.
        const QString expected = u"Service VerList\r\n"
                                 "VelmarD\t\t: 3.1.4\r\n"
                                 "GroupD\t\t: \r\n"
                                 "RelayD\t\t: \r\n"
                                 "ChatD\t\t: \r\n"
                                 "FileDispatchD\t: \r\n"
                                 "FileSessionD\t: 5.2.0.1\r\n"
                                 "CheckD\t\t: \r\n"
                                 "VelmarBoxServer\t\t: 6.0.3\r\n"_s;
        QCOMPARE(ProductVersion::daemonVersionList(dir.programDir()), expected);
        // A trailing separator on the folder changes nothing.
        QCOMPARE(ProductVersion::daemonVersionList(dir.programDir() + u'/'), expected);
    }

private:
    static QString fixture(const QString &name)
    {
        return qEnvironmentVariable("VELMAR_TEST_DATA") + u"/versions/"_s + name;
    }
};

QTEST_GUILESS_MAIN(TestProductVersion)
#include "tst_productversion.moc"
