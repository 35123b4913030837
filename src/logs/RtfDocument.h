#pragma once

#include <optional>
#include <QList>
#include <QString>

// Character formatting of one run of rich text, as far as the console shows it.
struct RtfCharFormat
{
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool strikeOut = false;
    int halfPoints = 0; // \fsN; 0 when the text never set a size
    std::optional<quint32> color; // 0xRRGGBB; empty for the automatic colour
    std::optional<quint32> background;
    QString fontFamily;

    bool operator==(const RtfCharFormat &) const = default;
};

struct RtfRun
{
    QString text; // "\n" stands for a line break inside the paragraph
    RtfCharFormat format;
};

struct RtfParagraph
{
    enum class Alignment { Left, Center, Right, Justify };
    Alignment alignment = Alignment::Left;
    QList<RtfRun> runs;

    QString plainText() const;
};

// What the rich-text reader makes of a message: paragraphs of formatted runs.
// It only needs QtCore; the window shows it through toHtml().
class RtfDocument final
{
public:
    QList<RtfParagraph> paragraphs;

    // Paragraphs joined with "\n"; line breaks are "\n" too.
    QString plainText() const;
    // An HTML document that QTextDocument shows with the runs' formatting.
    QString toHtml() const;
    // Plain text shown as it is: escaped, white space and line ends kept.
    static QString plainTextToHtml(const QString &text);
};
