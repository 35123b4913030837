#pragma once

#include <initializer_list>
#include <QList>
#include <QString>
#include <QStringView>
#include <variant>

// A statement text with printf-style "%d" and "%s" placeholders, split once so
// that filling it is one pass. Values are put in as they stand: a "%" inside a
// text value is just a character, never a placeholder.
class SqlTemplate
{
public:
    using Value = std::variant<qint64, QStringView>;

    explicit SqlTemplate(QStringView text);

    // The values in placeholder order; qFatal when the count differs.
    QString format(std::initializer_list<Value> values) const;
    QString text() const { return m_text; }
    int placeholderCount() const { return int(m_pieces.size()) - 1; }

private:
    QString m_text;
    QList<QString> m_pieces; // literal text around the placeholders
    qsizetype m_literalLength = 0;
};
