#pragma once

#include "CodePage.h"
#include "MessageService.h"
#include "UserInfo.h"

#include <functional>
#include <optional>
#include <QByteArrayView>
#include <QDate>
#include <QString>

// Why the member grid turns an edit down: the text of the balloon shown at the
// offending cell, its title and icon, and the grid column it points at (-1
// when it points at the row as a whole).
struct MemberRefusal
{
    enum class Reason {
        SpaceInUserId, // 65309, the only test made before the member is added
        UserIdCharacters, // 65315
        UserIdExists, // 61276
        TooLong, // 61317 with the column's limit
        EmptyPassword, // 61316, when the selection leaves the row
    };

    Reason reason;
    QString text;
    int column = -1;
    QString title;
    MessageService::Icon icon = MessageService::Icon::Error;

    // The balloon as the grid shows it (the caller anchors it at the cell).
    MessageService::Balloon balloon() const;

    friend bool operator==(const MemberRefusal &, const MemberRefusal &) = default;
};

// The rules a member row must pass in the member grids, on creation from the
// blank row and on every cell edit. Accepted is an empty optional. Lengths
// are counted in bytes of the code page, as the server's columns are sized.
class MemberRules final
{
public:
    // Answers whether a member row (in either grid) carries exactly this user ID.
    using LoginNameLookup = std::function<bool(const QString &loginName)>;

    explicit MemberRules(CodePage codePage = CodePage::system());

    // The byte limit of a grid column (MemberListModel::Column), -1 for none.
    static int byteLimit(int column);
    // Only the user ID column is closed, and only outside the blank row: a
    // member keeps the user ID it was created with.
    static bool isEditable(int column, bool blankRow);

    // The end of an edit in column of a member row (or the blank row).
    std::optional<MemberRefusal> checkCell(int column, QStringView text) const;

    // A user ID typed into the blank row, in the order the grid tests it: the
    // column's length, a space, the character rule, an existing user ID.
    std::optional<MemberRefusal> checkNewUserId(
        const QString &userId, const LoginNameLookup &exists) const;
    // The same for a user ID that arrives as code-page bytes (scripts, files):
    // bytes that are no text of the code page are refused by the character
    // rule before anything else, since they could not be stored as written.
    std::optional<MemberRefusal> checkNewUserId(
        QByteArrayView userId, const LoginNameLookup &exists) const;

    // A user ID added with checks but not typed into the blank row (the
    // external data import): the character rule, then an existing user ID.
    std::optional<MemberRefusal> checkAddedUserId(
        QStringView userId, const LoginNameLookup &exists) const;

    // Digits, ASCII letters, '-' and '_'; a byte from 0x80 up starts a
    // double-byte character, taken whole. Everything else (space, punctuation,
    // control bytes) fails. An empty ID passes.
    static bool passesCharacterRule(QByteArrayView userId);
    bool passesCharacterRule(QStringView userId) const;

    // Leaving a member row whose password is empty is refused.
    static std::optional<MemberRefusal> checkPasswordOnLeave(QStringView password);

    // A member as the blank row creates it: the user ID, every text empty,
    // all four flags set (男生, 公开, 阳历, 是), the id left to allocate (-1).
    static UserInfo newMember(const QString &userId);

    // The stored birthday form: "YYYY-MM-DD" (a real date), or empty for none.
    static bool isBirthdayText(QStringView text);
    // The date the date cell shows for a stored birthday: 1970-01-01 when it is
    // empty or cannot be read; stored text in another form is read in the
    // user's locale.
    static QDate birthdayDate(QStringView stored);
    static QString birthdayText(QDate date);

private:
    CodePage m_codePage;
};
