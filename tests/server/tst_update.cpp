// The release feed and the download of a setup file, against a real HTTP
// server on a local port: the feed's refusals, which releases are newer, a
// verified download, a checksum that does not match, a missing file and a
// cancelled download.

#include "LocalHttpServer.h"
#include "UpdateDownload.h"
#include "UpdateFeed.h"

#include <QCryptographicHash>
#include <QDir>
#include <QNetworkAccessManager>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
QByteArray sha256(const QByteArray &data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha256);
}

UpdateRelease release(const QUrl &url, const QByteArray &checksum)
{
    return { u"VelmarManager"_s, QVersionNumber(0, 2, 0), url, checksum };
}
} // namespace

class TstUpdate : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void feedIsRead();
    void feedRefusals_data();
    void feedRefusals();
    void newerReleasesPerProduct();
    void downloadVerified();
    void downloadRefused_data();
    void downloadRefused();
    void downloadCancelled();

private:
    QNetworkAccessManager m_network;
};

void TstUpdate::feedIsRead()
{
    const UpdateFeed::Result feed = UpdateFeed::parse(R"({"releases": [
        {"product": "VelmarManager", "version": "0.2.0",
         "url": "https://example.invalid/velmarmanager_0.2.0_amd64.deb",
         "sha256": "00112233445566778899aabbccddeeff00112233445566778899AABBCCDDEEFF"}]})");
    QVERIFY2(feed.ok(), qPrintable(feed.error));
    QCOMPARE(feed.releases.size(), 1);
    QCOMPARE(feed.releases[0].version, QVersionNumber(0, 2, 0));
    QCOMPARE(feed.releases[0].sha256.size(), 32);
}

void TstUpdate::feedRefusals_data()
{
    QTest::addColumn<QByteArray>("json");
    const QByteArray hash(64, 'a');
    QTest::newRow("not JSON") << QByteArray("<html>502 Bad Gateway</html>");
    QTest::newRow("cut short") << QByteArray(R"({"releases": [{"product": "VelmarD")");
    QTest::newRow("no releases") << QByteArray(R"({"versions": []})");
    QTest::newRow("short checksum")
        << QByteArray(R"({"releases": [{"product": "VelmarD", "version": "1.0",
                         "url": "https://x.invalid/a", "sha256": "abcd"}]})");
    QTest::newRow("no version") << (R"({"releases": [{"product": "VelmarD",
                         "url": "https://x.invalid/a", "sha256": ")"
        + hash + R"("}]})");
    QTest::newRow("file address") << (R"({"releases": [{"product": "VelmarD", "version": "1.0",
                         "url": "file:///etc/passwd", "sha256": ")"
        + hash + R"("}]})");
}

void TstUpdate::feedRefusals()
{
    QFETCH(QByteArray, json);
    const UpdateFeed::Result feed = UpdateFeed::parse(json);
    QVERIFY(!feed.ok());
    QVERIFY(feed.releases.isEmpty());
}

void TstUpdate::newerReleasesPerProduct()
{
    const auto r = [](const QString &product, const QString &version) {
        return UpdateRelease { product, QVersionNumber::fromString(version),
            QUrl(u"https://x.invalid/"_s + product), QByteArray(32, '\0') };
    };
    const QList<UpdateRelease> feed = { r(u"VelmarManager"_s, u"0.1.0"_s),
        r(u"VelmarD"_s, u"3.2"_s), r(u"VelmarManager"_s, u"0.3.0"_s),
        r(u"VelmarManager"_s, u"0.2.0"_s), r(u"ChatD"_s, u"9.0"_s) };
    const QList<UpdateRelease> offered = UpdateFeed::newer(feed,
        { { u"VelmarManager"_s, QVersionNumber(0, 1, 0) },
            { u"VelmarD"_s, QVersionNumber(3, 2) } });
    // The console's newest release only; VelmarD is current; ChatD is not installed.
    QCOMPARE(offered.size(), 1);
    QCOMPARE(offered[0].version, QVersionNumber(0, 3, 0));
}

void TstUpdate::downloadVerified()
{
    LocalHttpServer server;
    const QByteArray body = QByteArray("setup file ").repeated(5000);
    server.files.insert(u"/pub/velmarmanager_0.2.0_amd64.deb"_s, body);
    QTemporaryDir folder;
    UpdateDownload download(m_network,
        release(server.url(u"/pub/velmarmanager_0.2.0_amd64.deb"_s), sha256(body)), folder.path());
    QSignalSpy finished(&download, &UpdateDownload::finished);
    QSignalSpy progress(&download, &UpdateDownload::progress);
    download.start();
    QVERIFY(finished.wait(10000));
    QCOMPARE(finished.at(0).at(0).toBool(), true);
    QCOMPARE(download.filePath(), folder.filePath(u"velmarmanager_0.2.0_amd64.deb"_s));
    QFile file(download.filePath());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), body);
    QVERIFY(!progress.isEmpty());
    QCOMPARE(progress.last().at(0).toLongLong(), qint64(body.size()));
}

void TstUpdate::downloadRefused_data()
{
    QTest::addColumn<QByteArray>("served"); // empty: the server has no such file
    QTest::addColumn<QString>("reason");
    QTest::newRow("wrong checksum") << QByteArray("tampered") << u"SHA-256"_s;
    QTest::newRow("missing file") << QByteArray() << QString();
}

void TstUpdate::downloadRefused()
{
    QFETCH(QByteArray, served);
    QFETCH(QString, reason);
    LocalHttpServer server;
    if (!served.isEmpty())
        server.files.insert(u"/setup.deb"_s, served);
    QTemporaryDir folder;
    UpdateDownload download(
        m_network, release(server.url(u"/setup.deb"_s), sha256("original")), folder.path());
    QSignalSpy finished(&download, &UpdateDownload::finished);
    download.start();
    QVERIFY(finished.wait(10000));
    QCOMPARE(finished.at(0).at(0).toBool(), false);
    QVERIFY2(finished.at(0).at(1).toString().contains(reason),
        qPrintable(finished.at(0).at(1).toString()));
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

void TstUpdate::downloadCancelled()
{
    LocalHttpServer server;
    server.holdSecondHalf = true;
    const QByteArray body(200000, 'v');
    server.files.insert(u"/big.deb"_s, body);
    QTemporaryDir folder;
    UpdateDownload download(
        m_network, release(server.url(u"/big.deb"_s), sha256(body)), folder.path());
    QSignalSpy finished(&download, &UpdateDownload::finished);
    download.start();
    // Half of the file is sent and the rest held back: cancelled on the way.
    QTRY_VERIFY_WITH_TIMEOUT(server.answered > 0, 10000);
    QTest::qWait(100);
    download.cancel();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.at(0).at(0).toBool(), false);
    QCOMPARE(QDir(folder.path()).entryList(QDir::Files | QDir::Hidden), QStringList());
}

QTEST_GUILESS_MAIN(TstUpdate)
#include "tst_update.moc"
