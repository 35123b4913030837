#include "MemberRules.h"

#include "MemberColumns.h"

#include <QLocale>
#include <QStringDecoder>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

MemberRefusal refusal(MemberRefusal::Reason reason, QString text, int column = -1)
{
    return { reason, std::move(text), column, {}, MessageService::Icon::Error };
}

} // namespace

MessageService::Balloon MemberRefusal::balloon() const
{
    MessageService::Balloon tip;
    tip.title = title;
    tip.text = text;
    tip.icon = icon;
    tip.timeoutMs = 3000;
    return tip;
}

MemberRules::MemberRules(CodePage codePage)
    : m_codePage(std::move(codePage))
{ }

int MemberRules::byteLimit(int column)
{
    switch (column) {
    case MemberColumns::LoginNameColumn:
    case MemberColumns::DisplayNameColumn:
    case MemberColumns::PasswordColumn:
    case MemberColumns::HomePhoneColumn:
        return 20;
    case MemberColumns::EmailColumn:
    case MemberColumns::AddressColumn:
        return 100;
    case MemberColumns::MobileColumn:
        return 13;
    default:
        // The nickname, office phone and self-introduction are not limited
        // here; the drop-down and date cells cannot grow.
        return -1;
    }
}

bool MemberRules::isEditable(int column, bool blankRow)
{
    if (column < 0 || column >= MemberColumns::ColumnCount)
        return false;
    return column != MemberColumns::LoginNameColumn || blankRow;
}

std::optional<MemberRefusal> MemberRules::checkCell(int column, QStringView text) const
{
    const int limit = byteLimit(column);
    if (limit < 0 || m_codePage.byteLength(text) <= limit)
        return std::nullopt;
    // One message serves every column, its wording as it has always been.
    return refusal(MemberRefusal::Reason::TooLong, u"已经超过%1名."_s.arg(limit), column);
}

std::optional<MemberRefusal> MemberRules::checkNewUserId(
    const QString &userId, const LoginNameLookup &exists) const
{
    // The column's limit applies to every edit that ends in it, the blank
    // row's user ID included; the user ID tests follow.
    if (auto tooLong = checkCell(MemberColumns::LoginNameColumn, userId))
        return tooLong;
    if (userId.contains(u' ')) {
        // The message speaks of three letters at least; a space is all that
        // is tested, and the refusal is a tip rather than an error.
        return MemberRefusal { MemberRefusal::Reason::SpaceInUserId,
            u"用户ID可以用字母数字或符号，但不少于3个字母."_s, MemberColumns::LoginNameColumn,
            u"Tip!"_s, MessageService::Icon::Question };
    }
    if (!passesCharacterRule(userId)) {
        return refusal(MemberRefusal::Reason::UserIdCharacters,
            u"数字, 英文, '_' 除了以上特殊字符不能输入."_s, MemberColumns::LoginNameColumn);
    }
    if (exists && exists(userId)) {
        return refusal(
            MemberRefusal::Reason::UserIdExists, u"用户已存在."_s, MemberColumns::LoginNameColumn);
    }
    return std::nullopt;
}

std::optional<MemberRefusal> MemberRules::checkNewUserId(
    QByteArrayView userId, const LoginNameLookup &exists) const
{
    QStringDecoder decoder(m_codePage.name().constData(), QStringConverter::Flag::Stateless);
    QString text;
    bool readable = decoder.isValid();
    if (readable) {
        text = decoder.decode(userId);
        readable = !decoder.hasError();
    }
    if (!readable) {
        return refusal(MemberRefusal::Reason::UserIdCharacters,
            u"数字, 英文, '_' 除了以上特殊字符不能输入."_s, MemberColumns::LoginNameColumn);
    }
    return checkNewUserId(text, exists);
}

std::optional<MemberRefusal> MemberRules::checkAddedUserId(
    QStringView userId, const LoginNameLookup &exists) const
{
    if (!passesCharacterRule(userId)) {
        return refusal(MemberRefusal::Reason::UserIdCharacters,
            u"数字, 英文, '_' 除了以上特殊字符不能输入."_s, MemberColumns::LoginNameColumn);
    }
    if (exists && exists(userId.toString())) {
        return refusal(
            MemberRefusal::Reason::UserIdExists, u"用户已存在."_s, MemberColumns::LoginNameColumn);
    }
    return std::nullopt;
}

bool MemberRules::passesCharacterRule(QByteArrayView userId)
{
    for (qsizetype i = 0; i < userId.size(); ++i) {
        const auto byte = static_cast<unsigned char>(userId[i]);
        if (byte >= 0x80) {
            ++i; // the second byte of a double-byte character
            continue;
        }
        const bool allowed = (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z')
            || (byte >= 'a' && byte <= 'z') || byte == '-' || byte == '_';
        if (!allowed)
            return false;
    }
    return true;
}

bool MemberRules::passesCharacterRule(QStringView userId) const
{
    // ASCII is the same bytes in every code page the console runs with; only
    // other text needs the encoder (an import checks 100,000 IDs at a time).
    bool ascii = true;
    for (const QChar c : userId) {
        if (c.unicode() >= 0x80) {
            ascii = false;
            break;
        }
    }
    if (ascii) {
        for (const QChar c : userId) {
            const char16_t u = c.unicode();
            const bool allowed = (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z')
                || (u >= 'a' && u <= 'z') || u == '-' || u == '_';
            if (!allowed)
                return false;
        }
        return true;
    }
    // A character the code page lacks is written as '?', which the rule
    // refuses: such an ID could not be stored as typed.
    return passesCharacterRule(QByteArrayView(m_codePage.encode(userId)));
}

std::optional<MemberRefusal> MemberRules::checkPasswordOnLeave(QStringView password)
{
    if (!password.isEmpty())
        return std::nullopt;
    return refusal(
        MemberRefusal::Reason::EmptyPassword, u"用户密码错误."_s, MemberColumns::PasswordColumn);
}

UserInfo MemberRules::newMember(const QString &userId)
{
    UserInfo member;
    member.loginName = userId;
    member.id = -1;
    member.gender = 1;
    member.bPublic = 1;
    member.bSolar = 1;
    member.bAdmin = 1;
    return member;
}

bool MemberRules::isBirthdayText(QStringView text)
{
    if (text.isEmpty())
        return true;
    if (text.size() != 10 || text[4] != u'-' || text[7] != u'-')
        return false;
    for (qsizetype i : { 0, 1, 2, 3, 5, 6, 8, 9 }) {
        if (text[i] < u'0' || text[i] > u'9')
            return false;
    }
    return QDate::fromString(text.toString(), u"yyyy-MM-dd"_s).isValid();
}

QDate MemberRules::birthdayDate(QStringView stored)
{
    const QDate fallback(1970, 1, 1);
    if (stored.isEmpty())
        return fallback;
    const QString text = stored.trimmed().toString();
    QDate date = QDate::fromString(text, Qt::ISODate);
    if (!date.isValid())
        date = QLocale::system().toDate(text, QLocale::ShortFormat);
    if (!date.isValid())
        date = QLocale::system().toDate(text, QLocale::LongFormat);
    return date.isValid() ? date : fallback;
}

QString MemberRules::birthdayText(QDate date)
{
    return date.isValid() ? date.toString(u"yyyy-MM-dd"_s) : QString();
}
