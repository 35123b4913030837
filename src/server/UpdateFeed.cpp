#include "UpdateFeed.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

UpdateFeed::Result UpdateFeed::parse(const QByteArray &json)
{
    Result result;
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        result.error = u"发布列表不是有效的 JSON: %1 (位置 %2)"_s.arg(parseError.errorString())
                           .arg(parseError.offset);
        return result;
    }
    const QJsonValue releases = document.object().value(u"releases"_s);
    if (!document.isObject() || !releases.isArray()) {
        result.error = u"发布列表中没有 \"releases\" 数组"_s;
        return result;
    }
    const QJsonArray entries = releases.toArray();
    for (qsizetype i = 0; i < entries.size(); ++i) {
        const QJsonObject entry = entries.at(i).toObject();
        UpdateRelease release;
        release.product = entry.value(u"product"_s).toString();
        release.version = QVersionNumber::fromString(entry.value(u"version"_s).toString());
        release.url = QUrl(entry.value(u"url"_s).toString(), QUrl::StrictMode);
        const QString sha256 = entry.value(u"sha256"_s).toString();
        release.sha256 = QByteArray::fromHex(sha256.toLatin1());
        const bool hex
            = sha256.size() == 64 && std::all_of(sha256.cbegin(), sha256.cend(), [](QChar c) {
                  return c.isDigit() || (c.toLower() >= u'a' && c.toLower() <= u'f');
              });
        const QString scheme = release.url.scheme();
        if (release.product.isEmpty() || release.version.isNull() || !release.url.isValid()
            || (scheme != u"https"_s && scheme != u"http"_s) || !hex) {
            result.error
                = u"发布列表的第 %1 项不完整或有误 (需要 product, version, url, sha256)"_s.arg(
                    i + 1);
            result.releases.clear();
            return result;
        }
        result.releases.append(release);
    }
    return result;
}

QList<UpdateRelease> UpdateFeed::newer(
    const QList<UpdateRelease> &releases, const QHash<QString, QVersionNumber> &installed)
{
    QHash<QString, qsizetype> newest; // product -> index in releases
    for (qsizetype i = 0; i < releases.size(); ++i) {
        const UpdateRelease &release = releases.at(i);
        const auto have = installed.constFind(release.product);
        if (have == installed.cend() || release.version <= *have)
            continue;
        const auto best = newest.constFind(release.product);
        if (best == newest.cend() || releases.at(*best).version < release.version)
            newest.insert(release.product, i);
    }
    QList<UpdateRelease> offered;
    for (qsizetype i = 0; i < releases.size(); ++i) {
        if (newest.value(releases.at(i).product, -1) == i)
            offered.append(releases.at(i));
    }
    return offered;
}
