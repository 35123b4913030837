// The member import on the bench server (100,000 members): a CSV of 10,000
// new members read and added with the checks, and a CSV of 100,000 rows
// previewed (its first rows, then every row's refusal). Prints the medians
// of five runs beside the targets; bench/import_bench.sh makes the files and
// times sqlite3's .import of the same files beside it.
#include "CReadDBThread.h"
#include "CVelmarManagerDoc.h"
#include "Directory.h"
#include "DocumentUndoStack.h"
#include "ImportSource.h"
#include "MemberImporter.h"
#include "MessageService.h"
#include "RegistryHives.h"
#include "ServerFolder.h"

#include <algorithm>
#include <cstdio>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

using namespace Qt::StringLiterals;

namespace {

constexpr int Runs = 5;

class SilentMessages final : public MessageService
{
public:
    int showMessage(const Box &box) override
    {
        std::fprintf(stderr, "%s\n", qPrintable(box.text));
        return affirmative(box.buttons);
    }
    void showBalloon(const Balloon &) override { }
};

template<typename F> double timedMs(F &&work)
{
    QElapsedTimer clock;
    clock.start();
    work();
    return double(clock.nsecsElapsed()) / 1e6;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

void report(const char *what, const QList<double> &ms, double targetMs, const QString &detail)
{
    const QString target
        = targetMs > 0 ? u"(target %1 ms)"_s.arg(targetMs, 5) : u"              "_s;
    std::printf("%-44s %8.1f ms  %s  %s\n", what, median(ms), target.toUtf8().constData(),
        detail.toUtf8().constData());
}

ImportTable readCsv(const QString &path, qsizetype maxRows = -1)
{
    QString error;
    const std::unique_ptr<ImportSource> source
        = ImportSource::open(ImportSourceAddress::csv(path), &error);
    if (!source) {
        std::fprintf(stderr, "%s\n", error.toUtf8().constData());
        std::exit(1);
    }
    return source->read(source->tables().constFirst(), maxRows);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 4) {
        std::fprintf(stderr, "usage: %s SERVER_DIR CSV_10000 CSV_100000\n", argv[0]);
        return 2;
    }
    const QString serverDir = QString::fromLocal8Bit(argv[1]);
    const QString csv10k = QString::fromLocal8Bit(argv[2]);
    const QString csv100k = QString::fromLocal8Bit(argv[3]);
    ServerFolder folder(serverDir, serverDir + u"/registry"_s);
    std::unique_ptr<RegistryHives> hives = folder.openHives();
    folder.prepareDatabaseSettings(*hives);
    SilentMessages messages;
    CVelmarManagerDoc document;
    {
        QEventLoop loop;
        CReadDBThread reader(
            *hives, folder.profilePath(), folder.accessDatabasePath(), messages, document);
        QObject::connect(&reader, &CReadDBThread::workerExited, &loop, &QEventLoop::quit);
        reader.start();
        loop.exec();
    }
    if (document.loadState() != CVelmarManagerDoc::LoadState::Complete) {
        std::fprintf(stderr, "the load failed\n");
        return 1;
    }
    std::printf("%d members loaded\n", document.directory()->memberCount());
    MemberImporter importer(document);

    // 10,000 rows: the file read, then every row checked and added as one
    // step (taken back after each run).
    QList<double> readMs;
    QList<double> applyMs;
    QList<double> totalMs;
    int added = 0;
    for (int run = 0; run < Runs; ++run) {
        ImportTable table;
        readMs << timedMs([&] { table = readCsv(csv10k); });
        const ImportFields::Mapping mapping = ImportFields::guessMapping(table.columns);
        applyMs << timedMs([&] { added = importer.apply(table, mapping, false).added; });
        totalMs << readMs.last() + applyMs.last();
        document.undoStack()->undo();
    }
    report("10,000 rows: CSV read", readMs, 0, {});
    report(
        "10,000 rows: checked and added (one step)", applyMs, 0, u"%1 members added"_s.arg(added));
    report("10,000 rows: read + checked + added", totalMs, 2000, {});

    // 100,000 rows: what the wizard shows first, then the full scan.
    QList<double> firstMs;
    QList<double> fullMs;
    qsizetype refused = 0;
    for (int run = 0; run < Runs; ++run) {
        firstMs << timedMs([&] {
            const ImportTable table = readCsv(csv100k, 100);
            importer.preview(table, ImportFields::guessMapping(table.columns), 100);
        });
        fullMs << timedMs([&] {
            const ImportTable table = readCsv(csv100k);
            const QList<MemberImporter::RowPreview> rows
                = importer.preview(table, ImportFields::guessMapping(table.columns));
            refused = std::count_if(rows.cbegin(), rows.cend(),
                [](const MemberImporter::RowPreview &row) { return row.refusal.has_value(); });
        });
    }
    report("100,000 rows: first 100 previewed", firstMs, 1000, {});
    report("100,000 rows: read + every refusal", fullMs, 3000, u"%1 rows refused"_s.arg(refused));
    return 0;
}
