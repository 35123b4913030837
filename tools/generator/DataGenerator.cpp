#include "DataGenerator.h"

#include "CodePage.h"
#include "NameTables.h"

#include <algorithm>
#include <cmath>
#include <QDateTime>
#include <unordered_map>
#include <unordered_set>

using namespace Qt::StringLiterals;

namespace {

QString text(const char16_t *s)
{
    return QString::fromUtf16(s);
}

template<typename T> const T &pickFrom(Rng &rng, std::span<const T> items)
{
    return items[static_cast<size_t>(rng.below(items.size()))];
}

QString digits(Rng &rng, int count)
{
    QString out;
    out.reserve(count);
    for (int i = 0; i < count; ++i)
        out.append(QChar(u'0' + int(rng.below(10))));
    return out;
}

QString alphanumeric(Rng &rng, int count)
{
    static const char kChars[] = "abcdefghijkmnpqrstuvwxyzABCDEFGHJKLMNPQRSTUVWXYZ23456789";
    QString out;
    out.reserve(count);
    for (int i = 0; i < count; ++i)
        out.append(QChar::fromLatin1(kChars[rng.below(sizeof(kChars) - 1)]));
    return out;
}

QString capitalised(QString word)
{
    if (!word.isEmpty())
        word[0] = word[0].toUpper();
    return word;
}

quint64 pairKey(qint32 a, qint32 b)
{
    return (quint64(quint32(a)) << 32) | quint32(b);
}

// Rich text as the messenger client's editor produces it: Chinese text in the
// GBK code page written as \'hh escapes.
QString richText(const QString &plain, const QString &emphasis)
{
    const CodePage gbk("GBK");
    auto encode = [&gbk](const QString &s) {
        QString out;
        const QByteArray bytes = gbk.encode(s);
        for (char c : bytes) {
            const auto b = static_cast<unsigned char>(c);
            if (b >= 0x80)
                out += u"\\'"_s + QString::number(b, 16).rightJustified(2, u'0');
            else if (c == '\\' || c == '{' || c == '}')
                out += u'\\' + QChar::fromLatin1(c);
            else if (c == '\n')
                out += u"\\par\r\n"_s;
            else if (c != '\r')
                out += QChar::fromLatin1(c);
        }
        return out;
    };
    return u"{\\rtf1\\ansi\\ansicpg936\\deff0\\deflang1033\\deflangfe2052"
           u"{\\fonttbl{\\f0\\fnil\\fcharset134 \\'cb\\'ce\\'cc\\'e5;}}\r\n"
           u"{\\colortbl ;\\red0\\green0\\blue255;}\r\n"
           u"\\viewkind4\\uc1\\pard\\lang2052\\f0\\fs20 "_s
        + encode(plain) + u"\\par\r\n\\cf1\\b "_s + encode(emphasis) + u"\\cf0\\b0\\par\r\n}\r\n"_s;
}

const char *const kMobilePrefixes[]
    = { "130", "131", "132", "133", "135", "136", "137", "138", "139", "150", "151", "152", "158",
          "159", "177", "180", "182", "186", "187", "188", "189", "199" };
const char *const kAreaCodes[]
    = { "010", "021", "020", "0755", "0571", "025", "028", "027", "029", "022", "0512", "023" };

} // namespace

DataGenerator::DataGenerator(const GeneratorOptions &options)
    : m_options(options)
    , m_rng(options.seed)
{
    if (!m_options.referenceDate.isValid())
        m_options.referenceDate = QDate(2024, 6, 28);
}

QString DataGenerator::escapeMarkers(const QString &text)
{
    QString out = text;
    out.replace(u';', u"###VELMAR-SEMICOLON###"_s);
    out.replace(u'\'', u"###VELMAR-QUOTATION###"_s);
    out.replace(u'\\', u"###VELMAR-BACKSLASH###"_s);
    return out;
}

GeneratedData DataGenerator::generate()
{
    GeneratedData data;
    // Most parts draw from a stream of their own, so that a change in one part
    // leaves the others as they were for the same seed.
    makeRanks(data);
    const qint32 firstGuestGroup = m_options.groups + 1;
    makeGroupTree(data, false, 1);
    makeGroupTree(data, true, firstGuestGroup);
    makeMembers(data);
    makeRelations(data);
    makeTelephony(data);
    makeNotices(data);
    makeFolders(data);
    makeRights(data);
    return data;
}

void DataGenerator::makeRanks(GeneratedData &data)
{
    Rng rng = m_rng.fork(1);
    const auto names = NameTables::rankNames();
    for (int i = 0; i < m_options.positions; ++i) {
        GenRank rank;
        rank.id = i + 1;
        rank.name = size_t(i) < names.size() ? text(names[size_t(i)])
                                             : u"专家 L%1"_s.arg(i + 1 - int(names.size()));
        data.ranks.push_back(rank);
    }
    data.defaultPositionId = 1;
    data.groupVersion = int(rng.range(1, 250));
}

void DataGenerator::makeGroupTree(GeneratedData &data, bool guest, qint32 firstId)
{
    Rng rng = m_rng.fork(guest ? 3 : 2);
    const int count = m_options.groups;
    const int maxDepth = m_options.depth;
    if (count <= 0)
        return;

    struct Node
    {
        int depth;
        int parent;
        std::vector<int> children;
        QString name;
    };
    std::vector<Node> nodes;
    nodes.reserve(size_t(count));
    std::vector<std::unordered_set<QString>> siblingNames(size_t(count) + 1);
    std::unordered_set<QString> topNames;

    auto add = [&](int parent) {
        const int depth = parent < 0 ? 1 : nodes[size_t(parent)].depth + 1;
        const auto pool
            = guest ? NameTables::guestGroupNames(depth) : NameTables::regularGroupNames(depth);
        auto &used = parent < 0 ? topNames : siblingNames[size_t(parent)];
        QString name = text(pickFrom(rng, pool));
        for (int tries = 0; tries < 3 && used.count(name); ++tries)
            name = text(pickFrom(rng, pool));
        if (used.count(name)) {
            const QString base = name;
            for (int n = 2; used.count(name); ++n)
                name = u"%1 %2"_s.arg(base).arg(n);
        }
        used.insert(name);
        nodes.push_back(Node { depth, parent, {}, name });
        const int index = int(nodes.size()) - 1;
        if (parent >= 0)
            nodes[size_t(parent)].children.push_back(index);
        return index;
    };

    const int top
        = std::clamp(int(std::ceil(std::sqrt(double(count)) / 2.0)) + 2, 1, std::min(count, 12));
    std::vector<int> topLevel;
    for (int i = 0; i < top; ++i)
        topLevel.push_back(add(-1));
    // One branch reaches the full depth, so the deepest level is always present.
    for (int at = 0; int(nodes.size()) < count && nodes[size_t(at)].depth < maxDepth;)
        at = add(at);
    std::vector<int> open;
    for (int i = 0; i < int(nodes.size()); ++i)
        if (nodes[size_t(i)].depth < maxDepth)
            open.push_back(i);
    while (int(nodes.size()) < count) {
        const int parent = open.empty() ? -1 : open[size_t(rng.below(open.size()))];
        const int child = add(parent);
        if (parent < 0)
            topLevel.push_back(child);
        if (nodes[size_t(child)].depth < maxDepth)
            open.push_back(child);
    }

    // Ids follow creation, so a parent's id is below its children's; rows are
    // written parents first, in sibling order, as the console saves them.
    const qint32 rootId = guest ? -100 : -1;
    std::vector<std::pair<int, int>> stack; // node, position
    for (int i = int(topLevel.size()) - 1; i >= 0; --i)
        stack.emplace_back(topLevel[size_t(i)], i);
    while (!stack.empty()) {
        const auto [index, position] = stack.back();
        stack.pop_back();
        const Node &node = nodes[size_t(index)];
        GenGroup group;
        group.id = firstId + index;
        group.name = node.name;
        group.parent = node.parent < 0 ? rootId : firstId + node.parent;
        group.position = position;
        group.depth = node.depth;
        group.guest = guest;
        data.groups.push_back(group);
        for (int i = int(node.children.size()) - 1; i >= 0; --i)
            stack.emplace_back(node.children[size_t(i)], i);
    }
}

QString DataGenerator::uniqueLogin(QString base)
{
    // User IDs are at most 20 bytes; leave room for a numeric suffix.
    base.truncate(16);
    const QString key = base.toLower();
    if (!m_logins.contains(key)) {
        m_logins.insert(key);
        return base;
    }
    int &next = m_loginSuffix[key];
    if (next < 2)
        next = 2;
    QString candidate;
    do {
        candidate = base + QString::number(next++);
    } while (m_logins.contains(candidate.toLower()));
    m_logins.insert(candidate.toLower());
    return candidate;
}

GenMember DataGenerator::makeMember(qint32 id, bool guest)
{
    Rng &rng = m_rng;
    GenMember m;
    m.id = id;
    m.guest = guest ? 1 : 0;
    m.gender = rng.percent(55) ? 1 : 0;
    const bool latin = rng.percent(guest ? 40 : 12);
    QString loginBase;
    if (latin) {
        const QString first = QString::fromLatin1(pickFrom(rng,
            m.gender ? NameTables::latinMaleFirstNames() : NameTables::latinFemaleFirstNames()));
        const QString last = QString::fromLatin1(pickFrom(rng, NameTables::latinLastNames()));
        m.name = first + u' ' + last;
        if (m.name.size() > 20)
            m.name = first.left(1) + u". "_s + last;
        const int style = int(rng.below(100));
        if (style < 50)
            loginBase = first.toLower() + u'_' + last.toLower();
        else if (style < 80)
            loginBase = first.left(1).toLower() + last.toLower();
        else
            loginBase = first + u'-' + last;
    } else {
        const NameTables::Han &surname = rng.percent(4)
            ? pickFrom(rng, NameTables::compoundSurnames())
            : pickFrom(rng, NameTables::surnames());
        const auto givenPool
            = m.gender ? NameTables::maleGivenNames() : NameTables::femaleGivenNames();
        const int givenCount = rng.percent(70) ? 2 : 1;
        QString given;
        QString givenPinyin;
        QString initials;
        for (int i = 0; i < givenCount; ++i) {
            const NameTables::Han &g = pickFrom(rng, givenPool);
            given += text(g.text);
            givenPinyin += QString::fromLatin1(g.pinyin);
            initials += QChar::fromLatin1(g.pinyin[0]);
        }
        m.name = text(surname.text) + given;
        const QString sur = QString::fromLatin1(surname.pinyin);
        const int style = int(rng.below(100));
        if (style < 60)
            loginBase = sur + givenPinyin;
        else if (style < 75)
            loginBase = sur + u'_' + givenPinyin;
        else if (style < 85)
            loginBase = givenPinyin + sur;
        else if (style < 95)
            loginBase = sur + initials;
        else
            loginBase = capitalised(sur) + u'-' + capitalised(givenPinyin);
    }
    m.login = uniqueLogin(loginBase);

    if (rng.percent(45))
        m.nickname = escapeMarkers(text(pickFrom(rng, NameTables::nicknames())));
    const int pw = int(rng.below(100));
    if (pw < 70)
        m.password = alphanumeric(rng, int(rng.range(8, 12)));
    else if (pw < 85)
        m.password = u"Velmar"_s + digits(rng, 4);
    else if (pw < 92)
        m.password = u"123456"_s;
    else
        m.password = m.login.left(14).toLower() + digits(rng, 2);
    m.isPublic = rng.percent(88) ? 1 : 0;
    if (rng.percent(94)) {
        const char *domain = guest ? pickFrom(rng, NameTables::guestMailDomains())
                                   : pickFrom(rng, NameTables::mailDomains());
        m.email = m.login.toLower() + u'@' + QString::fromLatin1(domain);
    }
    if (rng.percent(88))
        m.mobile = QString::fromLatin1(pickFrom(rng, std::span<const char *const>(kMobilePrefixes)))
            + digits(rng, 8);
    const QString area
        = QString::fromLatin1(pickFrom(rng, std::span<const char *const>(kAreaCodes)));
    if (rng.percent(65)) {
        m.address = text(pickFrom(rng, NameTables::cities()))
            + text(pickFrom(rng, NameTables::streets())) + QString::number(rng.range(1, 399))
            + u"号"_s;
        if (rng.percent(40))
            m.address += QChar(u'A' + int(rng.below(4))) + u"座"_s
                + QString::number(rng.range(2, 28)) + digits(rng, 2) + u"室"_s;
    }
    if (rng.percent(40))
        m.homePhone = area + u'-' + QString::number(rng.range(2, 8)) + digits(rng, 7);
    if (rng.percent(75)) {
        m.officePhone = area + u'-' + QString::number(rng.range(5, 8)) + digits(rng, 7);
        if (rng.percent(40))
            m.officePhone += u" 转 "_s + digits(rng, 4);
    }
    if (rng.percent(85)) {
        const QDate birthday = QDate(1960, 1, 1).addDays(rng.range(0, 16070));
        m.birthday = birthday.toString(u"yyyy-MM-dd"_s);
    }
    if (rng.percent(35))
        m.description = text(pickFrom(rng, NameTables::descriptions()));
    m.solar = rng.percent(90) ? 1 : 0;
    m.admin = rng.below(1000) < 3 ? 1 : 0;
    return m;
}

void DataGenerator::makeMembers(GeneratedData &data)
{
    // Member texts draw from the main stream; the ids and the guest choice
    // from their own.
    Rng rng = m_rng.fork(4);
    const int count = m_options.members;
    std::vector<char> isGuest(size_t(count), 0);
    std::vector<int> candidates;
    // The first account is the administrator's, a regular member, unless
    // every member is a guest.
    for (int i = (m_options.guests < count ? 1 : 0); i < count; ++i)
        candidates.push_back(i);
    rng.shuffle(candidates);
    for (int i = 0; i < m_options.guests; ++i)
        isGuest[size_t(candidates[size_t(i)])] = 1;

    data.members.reserve(size_t(count));
    qint32 id = 1;
    for (int i = 0; i < count; ++i) {
        if (i > 0)
            id += rng.percent(3) ? qint32(rng.range(2, 4)) : 1; // deleted members leave gaps
        if (i == 0 && !isGuest[0]) {
            GenMember admin = makeMember(id, false);
            m_logins.remove(admin.login.toLower());
            m_logins.insert(u"admin"_s);
            admin.login = u"admin"_s;
            admin.name = u"系统管理员"_s;
            admin.nickname.clear();
            admin.email = u"admin@velmar.com.cn"_s;
            admin.admin = 1;
            admin.isPublic = 0;
            admin.description = u"服务器管理员账号"_s;
            data.members.push_back(admin);
            continue;
        }
        data.members.push_back(makeMember(id, isGuest[size_t(i)]));
    }
}

qint32 DataGenerator::pickRank(Rng &rng, const GeneratedData &data)
{
    if (data.ranks.empty())
        return -1;
    const int roll = int(rng.below(100));
    if (roll < 2)
        return -1; // no position
    if (roll < 57)
        return data.ranks.front().id;
    return data.ranks[size_t(rng.below(data.ranks.size()))].id;
}

void DataGenerator::makeRelations(GeneratedData &data)
{
    Rng rng = m_rng.fork(5);
    std::vector<qint32> regularGroups;
    std::vector<qint32> guestGroups;
    std::unordered_map<qint32, size_t> groupOrder;
    for (const GenGroup &g : data.groups) {
        groupOrder[g.id] = groupOrder.size();
        (g.guest ? guestGroups : regularGroups).push_back(g.id);
    }
    if ((regularGroups.empty() && guestGroups.empty()) || data.members.empty())
        return;

    // A few members are in no group at all.
    std::vector<size_t> placed;
    const size_t members = data.members.size();
    const size_t unplacedTarget = members >= 10 ? std::max<size_t>(1, members * 4 / 100) : 0;
    std::vector<size_t> order(members);
    for (size_t i = 0; i < members; ++i)
        order[i] = i;
    rng.shuffle(order);
    placed.assign(order.begin() + qsizetype(unplacedTarget), order.end());

    std::unordered_set<quint64> taken;
    std::unordered_map<qint32, int> nextPosition;
    const size_t target = size_t(m_options.memberships);
    data.relations.reserve(target);

    auto place = [&](const GenMember &member, bool guestTree) {
        const auto &pool = guestTree ? guestGroups : regularGroups;
        for (int tries = 0; tries < 8; ++tries) {
            const qint32 group = pool[size_t(rng.below(pool.size()))];
            if (!taken.insert(pairKey(group, member.id)).second)
                continue;
            GenRelation r;
            r.member = member.id;
            r.group = group;
            r.rank = pickRank(rng, data);
            r.position = nextPosition[group]++;
            r.guest = guestTree;
            data.relations.push_back(r);
            return true;
        }
        return false;
    };
    auto homeTree = [&](const GenMember &m) {
        const bool guestTree = m.guest != 0;
        if (guestTree ? guestGroups.empty() : regularGroups.empty())
            return !guestTree;
        return guestTree;
    };
    auto otherTree = [&](bool home) {
        return (home ? regularGroups.empty() : guestGroups.empty()) ? home : !home;
    };

    // Everyone placed gets a group of their own tree first.
    for (size_t i = 0; i < placed.size() && data.relations.size() < target; ++i) {
        const GenMember &m = data.members[placed[i]];
        place(m, homeTree(m));
    }
    // Further memberships: mostly more groups of the same tree, some in the
    // other tree (those members end up on level 3).
    size_t failures = 0;
    while (data.relations.size() < target && !placed.empty() && failures < target * 20 + 100) {
        const GenMember &m = data.members[placed[size_t(rng.below(placed.size()))]];
        const bool home = homeTree(m);
        const bool tree = rng.percent(85) ? home : otherTree(home);
        if (!place(m, tree))
            ++failures;
    }

    std::sort(data.relations.begin(), data.relations.end(),
        [&groupOrder](const GenRelation &a, const GenRelation &b) {
            const size_t ga = groupOrder[a.group];
            const size_t gb = groupOrder[b.group];
            return ga != gb ? ga < gb : a.position < b.position;
        });

    std::unordered_set<qint32> regular;
    std::unordered_set<qint32> guest;
    for (const GenRelation &r : data.relations)
        (r.guest ? guest : regular).insert(r.member);
    for (GenMember &m : data.members) {
        const bool inRegular = regular.count(m.id) != 0;
        const bool inGuest = guest.count(m.id) != 0;
        m.level = inRegular && inGuest ? 3 : inRegular ? 2 : inGuest ? 1 : 0;
    }
}

void DataGenerator::makeTelephony(GeneratedData &data)
{
    Rng rng = m_rng.fork(6);
    // Members with permission rows: all of them, or a random subset.
    std::vector<size_t> withRows(data.members.size());
    for (size_t i = 0; i < withRows.size(); ++i)
        withRows[i] = i;
    if (size_t(m_options.permissions) < withRows.size()) {
        rng.shuffle(withRows);
        withRows.resize(size_t(m_options.permissions));
        std::sort(withRows.begin(), withRows.end());
    }

    // The pool: numbered accounts, the first ones handed out in order.
    qint64 number = 60100000 + rng.range(0, 899) * 100;
    for (int i = 0; i < m_options.pool; ++i) {
        number += rng.percent(90) ? 1 : rng.range(2, 5);
        data.pool.push_back(GenPoolAccount { QString::number(number), digits(rng, 6), 0 });
    }
    const size_t assigned = std::min(data.pool.size() * 65 / 100, withRows.size());
    std::vector<size_t> receivers = withRows;
    rng.shuffle(receivers);
    receivers.resize(assigned);
    std::unordered_map<qint32, size_t> accountOf;
    for (size_t i = 0; i < assigned; ++i) {
        GenPoolAccount &account = data.pool[i];
        account.member = data.members[receivers[i]].id;
        accountOf[account.member] = i;
    }

    data.accessTokens.reserve(withRows.size());
    data.voipInfos.reserve(withRows.size());
    for (size_t index : withRows) {
        const qint32 id = data.members[index].id;
        GenVoipInfo voip;
        voip.member = id;
        const auto found = accountOf.find(id);
        if (found != accountOf.end()) {
            voip.id = data.pool[found->second].id;
            voip.password = data.pool[found->second].password;
        } else if (rng.percent(2)) {
            // An account typed in by hand, not from the pool.
            voip.id = u"8801"_s + digits(rng, 5);
            voip.password = digits(rng, 6);
        }
        GenAccessToken token;
        token.member = id;
        token.flags[0] = rng.percent(97);
        token.flags[1] = rng.percent(95);
        token.flags[2] = token.flags[0] && rng.percent(92); // file transfer needs messaging
        token.flags[3] = rng.percent(85);
        token.flags[4] = rng.percent(70);
        token.flags[5] = rng.percent(80);
        token.flags[6] = rng.percent(60);
        token.flags[7] = !voip.id.isEmpty() && rng.percent(95);
        data.accessTokens.push_back(token);
        data.voipInfos.push_back(voip);
    }
}

GenNotice DataGenerator::makeNotice(const GeneratedData &data, qint32 id, int index)
{
    Rng &rng = m_rng;
    GenNotice n;
    n.id = id;
    const GenMember *writer = &data.members[size_t(rng.below(data.members.size()))];
    for (int tries = 0; tries < 4 && writer->guest; ++tries)
        writer = &data.members[size_t(rng.below(data.members.size()))];
    n.writer = writer->id;
    n.writerLogin = writer->login;
    n.writerName = writer->name;

    const QDateTime written(m_options.referenceDate.addDays(-rng.range(0, 720)),
        QTime(int(rng.range(8, 19)), int(rng.range(0, 59)), int(rng.range(0, 59))));
    n.writeDate = written.toString(u"yyyy-MM-dd hh:mm:ss"_s);
    // The first notices show one of each kind, so that even a small board
    // has files, rich text and a title with an apostrophe.
    const QString topic = text(pickFrom(rng, NameTables::noticeTopics()));
    const QString title
        = index == 2 ? u"It's time: %1"_s : text(pickFrom(rng, NameTables::noticeTitles()));
    n.title = escapeMarkers(title.arg(topic));

    const auto pool = NameTables::noticeSentences();
    std::vector<size_t> order(pool.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    rng.shuffle(order);
    QStringList sentences { text(pool[0]) }; // the salutation opens every notice
    const int count = int(rng.range(1, 4));
    for (size_t i = 0; sentences.size() <= count && i < order.size(); ++i)
        if (order[i] != 0)
            sentences << text(pool[order[i]]);
    const QString plain = sentences.join(u"\r\n"_s);
    const bool rich = index == 1 || (index > 2 && rng.percent(30));
    n.contents = escapeMarkers(rich ? richText(plain, topic) : plain);

    if (index == 0 || rng.percent(50))
        n.writeEndDate = written.date().addDays(rng.range(7, 60)).toString(u"yyyyMMdd"_s);

    if (index == 0 || (index > 2 && rng.percent(25))) {
        n.fileSessionId = u"%1_%2_%3"_s.arg(writer->id)
                              .arg(written.toString(u"yyyyMMddhhmmss"_s))
                              .arg(rng.range(1000, 9999));
        const auto names = NameTables::fileNames();
        std::vector<size_t> picks(names.size());
        for (size_t i = 0; i < picks.size(); ++i)
            picks[i] = i;
        rng.shuffle(picks);
        const int files = int(rng.range(1, 3));
        QString items;
        qint64 total = 0;
        for (int i = 0; i < files; ++i) {
            const QString name = text(names[picks[size_t(i)]]);
            GenUploadedFile file;
            file.relativePath = QString(name).replace(u'\\', u'/');
            file.contents = (u"Velmar Messenger upload: "_s + name + u"\r\n"_s)
                                .toUtf8()
                                .repeated(int(rng.range(1, 40)));
            total += file.contents.size();
            items += u"%1|%2|%3|"_s.arg(i).arg(name).arg(file.contents.size());
            n.files.push_back(file);
        }
        n.fileList = escapeMarkers(u"|%1|%2|"_s.arg(files).arg(total) + items);
    }
    return n;
}

void DataGenerator::makeNotices(GeneratedData &data)
{
    if (data.members.empty())
        return;
    Rng rng = m_rng.fork(7);
    qint32 id = 0;
    for (int i = 0; i < m_options.notices; ++i) {
        id += rng.percent(5) ? qint32(rng.range(2, 3)) : 1; // deleted notices leave gaps
        data.notices.push_back(makeNotice(data, id, i));
    }
}

void DataGenerator::makeFolders(GeneratedData &data)
{
    Rng rng = m_rng.fork(8);
    const int count = m_options.folders;
    if (count <= 0)
        return;
    const auto roots = NameTables::folderRoots();
    const int rootCount = std::min({ count, int(roots.size()), 4 + count / 100 });
    struct Folder
    {
        QString path;
        int depth;
    };
    std::vector<Folder> folders;
    std::unordered_set<QString> paths;
    std::vector<size_t> rootOrder(roots.size());
    for (size_t i = 0; i < rootOrder.size(); ++i)
        rootOrder[i] = i;
    rng.shuffle(rootOrder);
    for (int i = 0; i < rootCount; ++i) {
        const QString path = u"\\"_s + text(roots[rootOrder[size_t(i)]]);
        paths.insert(path);
        folders.push_back({ path, 1 });
    }
    std::vector<size_t> open;
    for (size_t i = 0; i < folders.size(); ++i)
        open.push_back(i);
    while (int(folders.size()) < count) {
        const size_t parent = open[size_t(rng.below(open.size()))];
        QString path
            = folders[parent].path + u'\\' + text(pickFrom(rng, NameTables::folderNames()));
        if (paths.count(path)) {
            const QString base = path;
            for (int n = 2; paths.count(path); ++n)
                path = u"%1 (%2)"_s.arg(base).arg(n);
        }
        paths.insert(path);
        folders.push_back({ path, folders[parent].depth + 1 });
        if (folders.back().depth < 4)
            open.push_back(folders.size() - 1);
    }
    qint32 id = 0;
    for (const Folder &f : folders) {
        id += rng.percent(4) ? 2 : 1;
        data.folders.push_back(GenFolder { id, f.path });
    }
}

void DataGenerator::makeRights(GeneratedData &data)
{
    Rng rng = m_rng.fork(9);
    if (data.folders.empty() || m_options.rights <= 0)
        return;
    std::vector<qint32> regularGroups;
    std::vector<qint32> guestGroups;
    for (const GenGroup &g : data.groups)
        (g.guest ? guestGroups : regularGroups).push_back(g.id);
    const bool haveGroups = !data.groups.empty();
    const bool haveMembers = !data.members.empty();
    int groupTarget
        = haveGroups ? (haveMembers ? m_options.rights * 35 / 100 : m_options.rights) : 0;
    const qint64 groupPairs = qint64(data.folders.size()) * qint64(data.groups.size());
    groupTarget = int(std::min<qint64>(groupTarget, groupPairs));
    const int memberTarget = m_options.rights - groupTarget;

    auto authority = [&rng]() {
        const int roll = int(rng.below(100));
        return roll < 50 ? u"R"_s : roll < 85 ? u"W"_s : roll < 92 ? u"w"_s : u"X"_s;
    };
    std::unordered_set<quint64> taken;
    for (int made = 0, failures = 0; made < groupTarget && failures < groupTarget * 20 + 100;) {
        const qint32 folder = data.folders[size_t(rng.below(data.folders.size()))].id;
        const auto &pool = (guestGroups.empty() || (!regularGroups.empty() && rng.percent(85)))
            ? regularGroups
            : guestGroups;
        const qint32 group = pool[size_t(rng.below(pool.size()))];
        if (!taken.insert(pairKey(folder, group)).second) {
            ++failures;
            continue;
        }
        data.groupRights.push_back(GenRight { folder, group, authority() });
        ++made;
    }
    taken.clear();
    for (int made = 0, failures = 0;
         haveMembers && made < memberTarget && failures < memberTarget * 20 + 100;) {
        const qint32 folder = data.folders[size_t(rng.below(data.folders.size()))].id;
        const qint32 member = data.members[size_t(rng.below(data.members.size()))].id;
        if (!taken.insert(pairKey(folder, member)).second) {
            ++failures;
            continue;
        }
        data.memberRights.push_back(GenRight { folder, member, authority() });
        ++made;
    }
    auto byFolder = [](const GenRight &a, const GenRight &b) {
        return a.folder != b.folder ? a.folder < b.folder : a.owner < b.owner;
    };
    std::sort(data.groupRights.begin(), data.groupRights.end(), byFolder);
    std::sort(data.memberRights.begin(), data.memberRights.end(), byFolder);
}
