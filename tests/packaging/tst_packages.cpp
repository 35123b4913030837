// The Debian packages, built by cpack from this build: their control fields
// and contents, lintian, and both programs run from a throw-away root the
// packages are unpacked into, as an administrator would run them installed.

#include "PackagingTools.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QString field(const QString &deb, const QString &name)
{
    return PackagingTools::run(u"dpkg-deb"_s, { u"-f"_s, deb, name }).out.trimmed();
}
} // namespace

class TstPackages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void controlFields();
    void contents();
    void lintianFindsNoErrors();
    void velmarctlRunsFromTheUnpackedRoot();
    void consoleFindsItsServerFolderWhenInstalled();

private:
    QString binary(const QString &name) const { return m_root.filePath(u"usr/bin/"_s + name); }

    QTemporaryDir m_work;
    QDir m_root;
    QString m_console; // velmarmanager_*.deb
    QString m_ctl; // velmarctl_*.deb
    QString m_demo;
};

void TstPackages::initTestCase()
{
    REQUIRE_TOOL(u"cpack"_s);
    REQUIRE_TOOL(u"dpkg-deb"_s);
    REQUIRE_TOOL(u"dpkg-shlibdeps"_s);
    QVERIFY(m_work.isValid());
    const QString out = m_work.filePath(u"packages"_s);
    const ToolRun cpack = PackagingTools::run(u"cpack"_s,
        { u"--config"_s, QStringLiteral(VELMAR_CPACK_CONFIG), u"-G"_s, u"DEB"_s, u"-B"_s, out }, {},
        600000);
    QVERIFY2(cpack.exitCode == 0, qPrintable(cpack.out + cpack.err));
    const QDir packages(out);
    const QStringList console = packages.entryList({ u"velmarmanager_*.deb"_s });
    const QStringList ctl = packages.entryList({ u"velmarctl_*.deb"_s });
    QCOMPARE(console.size(), 1);
    QCOMPARE(ctl.size(), 1);
    m_console = packages.filePath(console.first());
    m_ctl = packages.filePath(ctl.first());

    QVERIFY(QDir(m_work.path()).mkdir(u"root"_s));
    m_root = QDir(m_work.filePath(u"root"_s));
    for (const QString &deb : { m_console, m_ctl }) {
        const ToolRun unpack = PackagingTools::run(u"dpkg"_s, { u"-x"_s, deb, m_root.path() });
        QVERIFY2(unpack.exitCode == 0, qPrintable(unpack.err));
    }

    m_demo = m_work.filePath(u"demo"_s);
    const ToolRun demo = PackagingTools::run(QStringLiteral(VELMAR_GEN_PATH),
        { u"--out"_s, m_demo, u"--registry-dir"_s, m_demo + u"/registry"_s, u"--preset"_s,
            u"demo"_s });
    QVERIFY2(demo.exitCode == 0, qPrintable(demo.err));
}

void TstPackages::controlFields()
{
    QCOMPARE(field(m_console, u"Package"_s), u"velmarmanager"_s);
    QCOMPARE(field(m_ctl, u"Package"_s), u"velmarctl"_s);
    for (const QString &deb : { m_console, m_ctl }) {
        QCOMPARE(field(deb, u"Section"_s), u"admin"_s);
        QCOMPARE(field(deb, u"Version"_s), QStringLiteral(VELMAR_VERSION));
        // The libraries come from dpkg-shlibdeps, the SQL driver by name.
        const QString depends = field(deb, u"Depends"_s);
        QVERIFY2(depends.contains(u"libqt6core6"_s), qPrintable(depends));
        QVERIFY2(depends.contains(u"libqt6sql6-sqlite"_s), qPrintable(depends));
        QVERIFY(field(deb, u"Suggests"_s).contains(u"odbc-postgresql"_s));
        // QtKeychain opens libsecret only at run time, so shlibdeps cannot see it.
        QVERIFY(field(deb, u"Recommends"_s).contains(u"libsecret-1-0"_s));
    }
    QVERIFY(field(m_console, u"Depends"_s).contains(u"libqt6widgets6"_s));
    const QString ctlDepends = field(m_ctl, u"Depends"_s);
    QVERIFY2(!ctlDepends.contains(u"libqt6widgets6"_s), qPrintable(ctlDepends));
    QVERIFY2(!ctlDepends.contains(u"libqt6gui6"_s), qPrintable(ctlDepends));
}

void TstPackages::contents()
{
    const QStringList console = {
        u"usr/bin/VelmarManager"_s,
        u"usr/share/applications/cn.com.velmar.VelmarManager.desktop"_s,
        u"usr/share/metainfo/cn.com.velmar.VelmarManager.metainfo.xml"_s,
        u"usr/share/icons/hicolor/scalable/apps/cn.com.velmar.VelmarManager.svg"_s,
        u"usr/share/icons/hicolor/48x48/apps/cn.com.velmar.VelmarManager.png"_s,
        u"usr/share/man/man1/VelmarManager.1.gz"_s,
        u"usr/share/doc/velmarmanager/copyright"_s,
        u"usr/share/doc/velmarmanager/changelog.gz"_s,
        u"usr/share/doc/velmarmanager/handbook/index.html"_s,
        u"usr/share/doc/velmarmanager/handbook/README.html"_s,
        u"usr/share/doc/velmarmanager/handbook/velmarctl.1.html"_s,
    };
    const QStringList ctl = {
        u"usr/bin/velmarctl"_s,
        u"usr/share/man/man1/velmarctl.1.gz"_s,
        u"usr/share/bash-completion/completions/velmarctl"_s,
        u"usr/share/doc/velmarctl/copyright"_s,
        u"usr/share/doc/velmarctl/changelog.gz"_s,
    };
    for (const auto &[deb, files] : { std::pair(m_console, console), std::pair(m_ctl, ctl) }) {
        const QString listing = PackagingTools::run(u"dpkg-deb"_s, { u"-c"_s, deb }).out;
        for (const QString &file : files)
            QVERIFY2(listing.contains(u" ./"_s + file + u'\n'), qPrintable(deb + u": "_s + file));
    }
    // Each program is in its own package only.
    const QString consoleListing = PackagingTools::run(u"dpkg-deb"_s, { u"-c"_s, m_console }).out;
    for (const QString &file : ctl) {
        if (!file.startsWith(u"usr/share/doc/"_s))
            QVERIFY2(!consoleListing.contains(u" ./"_s + file + u'\n'), qPrintable(file));
    }

    // Stripped: no debugging sections left.
    for (const QString &program : { u"VelmarManager"_s, u"velmarctl"_s }) {
        const ToolRun sections = PackagingTools::run(u"readelf"_s, { u"-S"_s, binary(program) });
        QCOMPARE(sections.exitCode, 0);
        QVERIFY2(!sections.out.contains(u".debug_info"_s), qPrintable(program));
    }
}

void TstPackages::lintianFindsNoErrors()
{
    REQUIRE_TOOL(u"lintian"_s);
    const ToolRun lintian = PackagingTools::run(
        u"lintian"_s, { u"--fail-on"_s, u"error"_s, m_console, m_ctl }, {}, 300000);
    QVERIFY2(lintian.exitCode == 0, qPrintable(lintian.out + lintian.err));
}

void TstPackages::velmarctlRunsFromTheUnpackedRoot()
{
    const ToolRun version = PackagingTools::run(binary(u"velmarctl"_s), { u"--version"_s });
    QCOMPARE(version.exitCode, 0);
    QVERIFY2(QRegularExpression(u"^velmarctl %1 \\(commit [0-9a-f]+(-modified)?\\)\\n$"_s.arg(
                                    QRegularExpression::escape(QStringLiteral(VELMAR_VERSION))))
                 .match(version.out)
                 .hasMatch(),
        qPrintable(version.out));

    const QString config = u"XDG_CONFIG_HOME="_s + m_work.filePath(u"ctl-config"_s);
    const ToolRun load = PackagingTools::run(binary(u"velmarctl"_s),
        { u"load"_s, u"--verbose"_s, u"--registry-dir"_s, m_demo + u"/registry"_s },
        { u"VELMAR_SERVER_DIR="_s + m_demo, config });
    QVERIFY2(load.exitCode == 0, qPrintable(load.err));
    QVERIFY2(load.out.contains(u"\"members\""_s), qPrintable(load.out));
    QVERIFY2(load.err.contains(u"server folder %1 (VELMAR_SERVER_DIR)"_s.arg(m_demo)),
        qPrintable(load.err));

    // Installed in /usr/bin, with no folder given it names what to give.
    const ToolRun none = PackagingTools::run(
        binary(u"velmarctl"_s), { u"load"_s }, { u"VELMAR_SERVER_DIR="_s, config });
    QCOMPARE(none.exitCode, 2);
    QVERIFY2(none.err.contains(u"--server-dir"_s), qPrintable(none.err));
}

void TstPackages::consoleFindsItsServerFolderWhenInstalled()
{
    const ToolRun version = PackagingTools::run(binary(u"VelmarManager"_s), { u"--version"_s });
    QCOMPARE(version.exitCode, 0);
    QVERIFY(
        version.out.startsWith(u"VelmarManager %1 (commit "_s.arg(QStringLiteral(VELMAR_VERSION))));

    const QStringList offscreen
        = { u"QT_QPA_PLATFORM=offscreen"_s, u"VELMAR_REGISTRY_DIR="_s + m_demo + u"/registry"_s,
              u"XDG_CONFIG_HOME="_s + m_work.filePath(u"console-config"_s) };
    const auto screenshot = [&](const QString &name, const QStringList &environment) {
        const QString path = m_work.filePath(name);
        const ToolRun run = PackagingTools::run(binary(u"VelmarManager"_s),
            { u"--screenshot"_s, path }, offscreen + environment, 60000);
        return std::pair(run, QFile::exists(path));
    };

    // The folder of the executable holds no Serverinfo.ini: the environment's folder.
    const auto [fromEnvironment, shot1]
        = screenshot(u"env.png"_s, { u"VELMAR_SERVER_DIR="_s + m_demo });
    QVERIFY2(fromEnvironment.exitCode == 0 && shot1, qPrintable(fromEnvironment.err));
    // Next time without it: the folder used last.
    const auto [remembered, shot2] = screenshot(u"remembered.png"_s, { u"VELMAR_SERVER_DIR="_s });
    QVERIFY2(remembered.exitCode == 0 && shot2, qPrintable(remembered.err));
    // Nothing to go by: a screenshot run does not wait for the folder dialog.
    const auto [nothing, shot3] = screenshot(u"nothing.png"_s,
        { u"VELMAR_SERVER_DIR="_s, u"XDG_CONFIG_HOME="_s + m_work.filePath(u"fresh-config"_s) });
    QCOMPARE(nothing.exitCode, 2);
    QVERIFY(!shot3);
    QVERIFY2(nothing.err.contains(u"--server-dir"_s), qPrintable(nothing.err));
}

QTEST_GUILESS_MAIN(TstPackages)
#include "tst_packages.moc"
