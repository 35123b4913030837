// What the installed programs bring besides their binaries, checked with the
// real tools: the manual pages list every command and option the programs
// have (groff renders them without a warning), the bash completion completes
// what velmarctl accepts, the desktop entry and the AppStream metadata pass
// their validators, and velmarctl links no GUI library.

#include "EditCommandParser.h"
#include "PackagingTools.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString Velmarctl = QStringLiteral(VELMARCTL_PATH);
const QString Console = QStringLiteral(VELMARMANAGER_PATH);
const QString ManDir = QStringLiteral(VELMAR_MAN_DIR);
const QString Completion = QStringLiteral(VELMAR_COMPLETION_FILE);

QString helpOf(const QString &program)
{
    const ToolRun run = PackagingTools::run(program, { u"--help"_s });
    return run.exitCode == 0 ? run.out : QString();
}

// The long and short options a help text names.
QStringList optionsIn(const QString &help)
{
    QSet<QString> options;
    static const QRegularExpression option(u"(?<![\\w-])(--?[a-z][a-z-]*)"_s);
    for (const QRegularExpressionMatch &match : option.globalMatch(help))
        options.insert(match.captured(1));
    return options.values();
}

// velmarctl's commands: the words at the start of the description's lines,
// before the options.
QStringList commandsIn(const QString &help)
{
    QStringList commands;
    const QString description = help.left(help.indexOf(u"\nOptions:"_s));
    static const QRegularExpression command(
        u"^  ([a-z]+)\\b"_s, QRegularExpression::MultilineOption);
    for (const QRegularExpressionMatch &match : command.globalMatch(description))
        commands.append(match.captured(1));
    return commands;
}

// The page as a reader sees it, one paragraph a line, without hyphenation.
QString renderedPage(const QString &name)
{
    const ToolRun run = PackagingTools::run(u"groff"_s,
        { u"-K"_s, u"utf8"_s, u"-Tutf8"_s, u"-man"_s, u"-rLL=2000n"_s, u"-rHY=0"_s, u"-P-cbou"_s,
            ManDir + u'/' + name });
    return run.out;
}

bool pageNames(const QString &page, const QString &word)
{
    const QRegularExpression pattern(
        u"(?<![\\w-])"_s + QRegularExpression::escape(word) + u"(?![\\w-])"_s);
    return pattern.match(page).hasMatch();
}

QStringList editFamilies()
{
    QStringList families;
    for (const QString &command : EditCommandParser::commands()) {
        const QString family = command.section(u' ', 0, 0);
        if (!families.contains(family))
            families.append(family);
    }
    return families;
}
} // namespace

class TstPackaging : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void manPagesListEveryCommandAndOption();
    void manPagesRenderWithoutWarnings();
    void completionOffersCommandsAndOptions();
    void completionOffersFoldersFilesAndUserIds();
    void desktopEntryAndMetadataValidate();
    void velmarctlLinksNoGuiLibrary();

private:
    // The completions bash offers for line (the cursor at its end).
    QStringList complete(const QString &line);
    QString m_ctlHelp;
};

void TstPackaging::initTestCase()
{
    m_ctlHelp = helpOf(Velmarctl);
    QVERIFY(!m_ctlHelp.isEmpty());
    QVERIFY(commandsIn(m_ctlHelp).contains(u"load"_s));
}

void TstPackaging::manPagesListEveryCommandAndOption()
{
    REQUIRE_TOOL(u"groff"_s);
    const QString ctlPage = renderedPage(u"velmarctl.1"_s);
    QVERIFY(ctlPage.contains(u"EXIT STATUS"_s));
    QStringList missing;
    const QStringList words = optionsIn(m_ctlHelp) + commandsIn(m_ctlHelp)
        + EditCommandParser::commands() + EditCommandParser::memberOptions();
    for (const QString &word : words) {
        if (!pageNames(ctlPage, word))
            missing.append(word);
    }
    QVERIFY2(
        missing.isEmpty(), qPrintable(u"velmarctl.1 does not list: "_s + missing.join(u", "_s)));

    const QString consolePage = renderedPage(u"VelmarManager.1"_s);
    const QString consoleHelp = helpOf(Console);
    QVERIFY(consoleHelp.contains(u"--server-dir"_s));
    for (const QString &option : optionsIn(consoleHelp)) {
        if (!pageNames(consolePage, option))
            missing.append(option);
    }
    QVERIFY2(missing.isEmpty(),
        qPrintable(u"VelmarManager.1 does not list: "_s + missing.join(u", "_s)));
}

void TstPackaging::manPagesRenderWithoutWarnings()
{
    REQUIRE_TOOL(u"groff"_s);
    for (const QString &page : { u"velmarctl.1"_s, u"VelmarManager.1"_s }) {
        const ToolRun run = PackagingTools::run(u"groff"_s,
            { u"-K"_s, u"utf8"_s, u"-Tutf8"_s, u"-man"_s, u"-ww"_s, u"-z"_s,
                ManDir + u'/' + page });
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(run.err.isEmpty(), qPrintable(page + u": "_s + run.err));
    }
}

QStringList TstPackaging::complete(const QString &line)
{
    // The line is split as bash splits it for completion; a trailing blank
    // starts a new, empty word.
    static const QString driver = uR"(
unset VELMAR_SERVER_DIR
source /usr/share/bash-completion/bash_completion || exit 3
source "$1" || exit 3
line=$2
read -ra COMP_WORDS <<<"$line"
[[ $line == *' ' ]] && COMP_WORDS+=("")
COMP_LINE=$line
COMP_POINT=${#line}
COMP_CWORD=$((${#COMP_WORDS[@]} - 1))
COMPREPLY=()
_velmarctl velmarctl "${COMP_WORDS[COMP_CWORD]}" "${COMP_WORDS[COMP_CWORD - 1]}"
printf '%s\n' "${COMPREPLY[@]}"
)"_s;
    const ToolRun run = PackagingTools::run(
        u"bash"_s, { u"--norc"_s, u"-c"_s, driver, u"complete"_s, Completion, line });
    if (run.exitCode != 0)
        qWarning("bash: %s", qPrintable(run.err));
    QStringList words = run.out.split(u'\n', Qt::SkipEmptyParts);
    words.sort();
    return words;
}

void TstPackaging::completionOffersCommandsAndOptions()
{
    REQUIRE_TOOL(u"bash"_s);
    QVERIFY2(QFile::exists(u"/usr/share/bash-completion/bash_completion"_s),
        "bash-completion is not installed: run scripts/install-deps.sh");

    QStringList commands = commandsIn(m_ctlHelp) + editFamilies();
    commands.sort();
    QCOMPARE(complete(u"velmarctl "_s), commands);
    QCOMPARE(complete(u"velmarctl re"_s), QStringList({ u"recover"_s, u"resave"_s }));

    // Each edit family completes exactly its subcommands.
    for (const QString &family : editFamilies()) {
        QStringList subcommands;
        for (const QString &command : EditCommandParser::commands()) {
            if (command.startsWith(family + u' '))
                subcommands.append(command.section(u' ', 1));
        }
        subcommands.sort();
        if (!subcommands.isEmpty())
            QCOMPARE(complete(u"velmarctl "_s + family + u' '), subcommands);
    }

    // Every option of the help is offered somewhere: after a command, or
    // among a member's options.
    QSet<QString> offered;
    QStringList lines = { u"velmarctl -"_s, u"velmarctl member add alice -"_s };
    for (const QString &command : commandsIn(m_ctlHelp))
        lines.append(u"velmarctl %1 -"_s.arg(command));
    for (const QString &line : std::as_const(lines)) {
        for (const QString &word : complete(line))
            offered.insert(word);
    }
    QStringList notOffered;
    for (const QString &option : optionsIn(m_ctlHelp)) {
        if (option.startsWith(u"--"_s) && !offered.contains(option))
            notOffered.append(option);
    }
    QVERIFY2(notOffered.isEmpty(), qPrintable(u"not completed: "_s + notOffered.join(u", "_s)));

    const QStringList memberAdd = complete(u"velmarctl member add alice --"_s);
    for (const QString &option : EditCommandParser::memberOptions())
        QVERIFY2(memberAdd.contains(option), qPrintable(option));
    // The value of a text option is free text.
    QCOMPARE(complete(u"velmarctl member add alice --name "_s), QStringList());
    QCOMPARE(complete(u"velmarctl logs --format "_s), QStringList({ u"json"_s, u"tsv"_s }));
    QCOMPARE(complete(u"velmarctl group move /Sales "_s),
        QStringList({ u"down"_s, u"first"_s, u"into"_s, u"last"_s, u"up"_s }));
}

void TstPackaging::completionOffersFoldersFilesAndUserIds()
{
    REQUIRE_TOOL(u"bash"_s);
    REQUIRE_TOOL(u"sqlite3"_s);
    QTemporaryDir root;
    QVERIFY(QDir(root.path()).mkdir(u"server"_s));
    QFile script(root.filePath(u"script.txt"_s));
    QVERIFY(script.open(QIODevice::WriteOnly));
    script.close();

    const QString dir = root.path() + u'/';
    QCOMPARE(complete(u"velmarctl --server-dir "_s + dir), QStringList({ dir + u"server"_s }));
    QCOMPARE(
        complete(u"velmarctl edit "_s + dir + u"sc"_s), QStringList({ dir + u"script.txt"_s }));

    const QString server = root.filePath(u"server"_s);
    const ToolRun made = PackagingTools::run(u"sqlite3"_s,
        { server + u"/VelmarDB.mdb"_s,
            u"CREATE TABLE Member (MemberID TEXT); INSERT INTO Member VALUES ('alice'), "
            "('albert'), ('bob');"_s });
    QCOMPARE(made.exitCode, 0);
    QCOMPARE(complete(u"velmarctl place /Sales --server-dir %1 al"_s.arg(server)),
        QStringList({ u"albert"_s, u"alice"_s }));
    QCOMPARE(complete(u"velmarctl member set b"_s), QStringList()); // no folder: no IDs
    QCOMPARE(complete(u"velmarctl member delete --server-dir=%1 alice b"_s.arg(server)),
        QStringList({ u"bob"_s }));
}

void TstPackaging::desktopEntryAndMetadataValidate()
{
    REQUIRE_TOOL(u"desktop-file-validate"_s);
    REQUIRE_TOOL(u"appstreamcli"_s);
    const ToolRun desktop
        = PackagingTools::run(u"desktop-file-validate"_s, { QStringLiteral(VELMAR_DESKTOP_FILE) });
    QVERIFY2(desktop.exitCode == 0, qPrintable(desktop.out + desktop.err));
    const ToolRun metainfo = PackagingTools::run(
        u"appstreamcli"_s, { u"validate"_s, u"--no-net"_s, QStringLiteral(VELMAR_METAINFO_FILE) });
    QVERIFY2(metainfo.exitCode == 0, qPrintable(metainfo.out + metainfo.err));
}

void TstPackaging::velmarctlLinksNoGuiLibrary()
{
    REQUIRE_TOOL(u"readelf"_s);
    const ToolRun run = PackagingTools::run(u"readelf"_s, { u"-d"_s, Velmarctl });
    QCOMPARE(run.exitCode, 0);
    QStringList needed;
    static const QRegularExpression library(u"\\(NEEDED\\).*\\[(.+)\\]"_s);
    for (const QRegularExpressionMatch &match : library.globalMatch(run.out))
        needed.append(match.captured(1));
    QVERIFY(needed.contains(u"libQt6Core.so.6"_s));
    const QStringList gui
        = needed.filter(QRegularExpression(u"Qt6(Gui|Widgets)|libEGL|libX11|libGL"_s));
    QVERIFY2(gui.isEmpty(), qPrintable(u"velmarctl links "_s + gui.join(u", "_s)));
}

QTEST_GUILESS_MAIN(TstPackaging)
#include "tst_packaging.moc"
