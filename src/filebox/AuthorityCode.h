#pragma once

#include <QString>

// The three rights a group or member can have on a folder and their forms:
// stored in the Authority column as a letter, shown as a string-table text.
class AuthorityCode
{
public:
    static constexpr qint32 None = 0;
    static constexpr qint32 ReadOnly = 1;
    static constexpr qint32 ReadWrite = 2;

    // "W"/"w" -> 2, "R"/"r" -> 1, any other text (empty included) -> 0.
    static qint32 decode(const QString &stored);
    // 2 -> "W", 1 -> "R", anything else -> "X".
    static QString encode(qint32 authority);
    // 1 -> "只读", 2 -> "读/写", anything else -> empty (nothing shown).
    static QString displayText(qint32 authority);
};
