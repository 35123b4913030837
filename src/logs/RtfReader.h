#pragma once

#include "CodePage.h"
#include "RtfDocument.h"

#include <QStringView>

// Reads the rich text that messenger clients send (text beginning with
// "{\rtf1") into an RtfDocument. It understands groups, control words and
// symbols, the font and colour tables, bold, italic, underline, strike-out,
// size, colours, alignment, paragraphs and line breaks, "\'hh" bytes in the
// text's code page and "\uN" with its fallback characters. Destinations marked
// "\*", pictures, objects and the other non-text destinations are skipped, as
// are "\binN" data and control words it does not know. Broken input (missing
// or extra braces, deep nesting, cut-off control words) gives what text it can
// and never fails.
class RtfReader final
{
public:
    // Groups nested deeper than this share the state of the deepest kept one.
    static constexpr int MaxDepth = 128;

    // codePage decodes "\'hh" bytes unless "\ansicpgN" or a font's Chinese,
    // Japanese or Korean character set names another one that is known.
    explicit RtfReader(CodePage codePage);

    // True when text begins with "{\rtf1" (nothing before it, not even a space).
    static bool isRichText(QStringView text);

    RtfDocument read(QStringView rtf) const;
    // Rich text formatted; any other text escaped and shown as it is.
    QString toHtml(QStringView text) const;

private:
    CodePage m_codePage;
};
