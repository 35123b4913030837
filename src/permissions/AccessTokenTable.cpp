#include "AccessTokenTable.h"

#include "DbConnection.h"
#include "Recordset.h"
#include "SqlTemplate.h"
#include "VoipAccountPool.h"

#include <array>

using namespace Qt::StringLiterals;

QString AccessTokenTable::selectTokensStatement()
{
    return u"SELECT \t\t\t\tOMemberID, MessageOn, ChatOn, FileTransferOn, TTSOn, VoiceToPhoneOn, "
           "OneToOneCallOn, SMSOn, VoipOn \t\t\tFROM AccessToken"_s;
}

QString AccessTokenTable::selectAccountsStatement()
{
    return u"SELECT\t\t\t\t\t\t\t\t\t\t\t\t\t\t\tOMemberID, ID, Pass\t\t\t\t\t\t\t\t\tFROM VoipInfo"_s;
}

QString AccessTokenTable::insertTokenStatement(qint32 memberId, const CAccessToken &token)
{
    static const SqlTemplate insert(
        u"INSERT INTO AccessToken \t\t\t\t(OMemberID, MessageOn, ChatOn, FileTransferOn, "
        "TTSOn, VoiceToPhoneOn, OneToOneCallOn, SMSOn, VoipOn) \t\t\tVALUES \t\t\t\t( "
        "'%d','%d','%d','%d','%d','%d','%d','%d','%d') ");
    const auto flag = [&token](CAccessToken::Feature feature) {
        return SqlTemplate::Value(qint64(token.rawFlag(feature)));
    };
    return insert.format({ qint64(memberId), flag(CAccessToken::MessageOn),
        flag(CAccessToken::ChatOn), flag(CAccessToken::FileTransferOn), flag(CAccessToken::TTSOn),
        flag(CAccessToken::VoiceToPhoneOn), flag(CAccessToken::OneToOneCallOn),
        flag(CAccessToken::SMSOn), flag(CAccessToken::VoipOn) });
}

QString AccessTokenTable::insertAccountStatement(qint32 memberId, const VoipAccount &account)
{
    // The id and password go in as they stand: a quote in either breaks the
    // statement, which fails the save rather than writing something else.
    static const SqlTemplate insert(u"INSERT INTO VoipInfo \t\t\t\t(OMemberID, ID, Pass) "
                                    "\t\t\tVALUES \t\t\t\t( '%d', '%s', '%s') ");
    return insert.format(
        { qint64(memberId), QStringView(account.id), QStringView(account.password) });
}

void AccessTokenTable::load(DbConnection &connection)
{
    clear();

    Recordset tokens = connection.execute(selectTokensStatement());
    if (!tokens.isEOF()) {
        // Columns by position: 100,000 rows of nine columns each.
        const int memberColumn = tokens.fieldIndex(u"OMemberID");
        std::array<int, CAccessToken::FeatureCount> featureColumns {};
        for (int f = 0; f < CAccessToken::FeatureCount; ++f)
            featureColumns[f]
                = tokens.fieldIndex(CAccessToken::columnName(CAccessToken::Feature(f)));
        while (!tokens.isEOF()) {
            // A row that names no member belongs to nobody the console can show;
            // it is left out (and so not written back).
            if (!tokens.isNull(memberColumn)) {
                CAccessToken token;
                for (int f = 0; f < CAccessToken::FeatureCount; ++f) {
                    const int column = featureColumns[f];
                    token.setFlag(CAccessToken::Feature(f), tokens.intField(column, 0) != 0);
                }
                // Rows mostly arrive in id order: the hint makes those inserts
                // constant-time.
                m_tokens.insert_or_assign(m_tokens.end(), tokens.intField(memberColumn), token);
            }
            tokens.moveNext();
        }
    }
    tokens.close();

    Recordset accounts = connection.execute(selectAccountsStatement());
    if (!accounts.isEOF()) {
        const int memberColumn = accounts.fieldIndex(u"OMemberID");
        const int idColumn = accounts.fieldIndex(u"ID");
        const int passColumn = accounts.fieldIndex(u"Pass");
        while (!accounts.isEOF()) {
            if (!accounts.isNull(memberColumn)) {
                VoipAccount account { accounts.textField(idColumn),
                    accounts.textField(passColumn) };
                m_accounts.insert_or_assign(m_accounts.end(), accounts.intField(memberColumn), account);
            }
            accounts.moveNext();
        }
    }
    accounts.close();
    m_modified = false;
}

void AccessTokenTable::save(DbConnection &connection) const
{
    if (!m_modified)
        return;
    connection.execute(u"DELETE FROM AccessToken"_s);
    for (const auto &[memberId, token] : m_tokens)
        connection.execute(insertTokenStatement(memberId, token));
    connection.execute(u"DELETE FROM VoipInfo"_s);
    for (const auto &[memberId, account] : m_accounts)
        connection.execute(insertAccountStatement(memberId, account));
}

void AccessTokenTable::clear()
{
    m_tokens.clear();
    m_accounts.clear();
    m_modified = false;
}

const CAccessToken *AccessTokenTable::token(qint32 memberId) const
{
    const auto it = m_tokens.find(memberId);
    return it == m_tokens.end() ? nullptr : &it->second;
}

const VoipAccount *AccessTokenTable::voipAccount(qint32 memberId) const
{
    const auto it = m_accounts.find(memberId);
    return it == m_accounts.end() ? nullptr : &it->second;
}

CAccessToken &AccessTokenTable::ensureToken(qint32 memberId)
{
    return m_tokens.try_emplace(memberId, CAccessToken::defaults()).first->second;
}

VoipAccount &AccessTokenTable::ensureVoipAccount(qint32 memberId)
{
    return m_accounts.try_emplace(memberId).first->second;
}

void AccessTokenTable::ensureRecords(qint32 memberId)
{
    ensureToken(memberId);
    ensureVoipAccount(memberId);
}

void AccessTokenTable::addMember(
    qint32 memberId, const QString &voipId, const QString &voipPassword)
{
    m_tokens.insert_or_assign(memberId, CAccessToken::forNewMember(!voipId.isEmpty()));
    m_accounts.insert_or_assign(memberId, VoipAccount { voipId, voipPassword });
    m_modified = true;
}

void AccessTokenTable::removeMemberPermissions(qint32 memberId)
{
    m_tokens.erase(memberId);
    m_modified = true;
}

void AccessTokenTable::removeMemberVoipAccount(qint32 memberId)
{
    m_accounts.erase(memberId);
    m_modified = true;
}

void AccessTokenTable::setFlag(qint32 memberId, CAccessToken::Feature feature, bool on)
{
    ensureToken(memberId).applyFlagRule(feature, on);
    m_modified = true;
}

void AccessTokenTable::setFlagForMembers(
    const QList<qint32> &memberIds, CAccessToken::Feature feature, bool on)
{
    for (qint32 memberId : memberIds)
        ensureToken(memberId).applyFlagRule(feature, on);
    if (!memberIds.isEmpty())
        m_modified = true;
}

void AccessTokenTable::editVoipAccount(
    qint32 memberId, VoipField field, const QString &text, VoipAccountPool *pool)
{
    VoipAccount &account = ensureVoipAccount(memberId);
    if (field == VoipField::Id)
        account.id = text;
    else
        account.password = text;
    if (pool)
        pool->reassign(memberId, account.id);
    m_modified = true;
}

void AccessTokenTable::giveVoipAccount(
    qint32 memberId, const QString &voipId, const QString &voipPassword)
{
    m_accounts.insert_or_assign(memberId, VoipAccount { voipId, voipPassword });
    // The defaults with VoipOn set are every feature on.
    ensureToken(memberId).setFlag(CAccessToken::VoipOn, true);
    m_modified = true;
}

AccessTokenTable::MemberRecords AccessTokenTable::recordsOf(qint32 memberId) const
{
    MemberRecords records;
    if (const CAccessToken *found = token(memberId))
        records.token = *found;
    if (const VoipAccount *found = voipAccount(memberId))
        records.account = *found;
    records.tableModified = m_modified;
    return records;
}

void AccessTokenTable::restoreRecords(qint32 memberId, const MemberRecords &records)
{
    if (records.token)
        m_tokens.insert_or_assign(memberId, *records.token);
    else
        m_tokens.erase(memberId);
    if (records.account)
        m_accounts.insert_or_assign(memberId, *records.account);
    else
        m_accounts.erase(memberId);
    m_modified = records.tableModified;
}
