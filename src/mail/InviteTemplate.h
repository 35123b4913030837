#pragma once

#include "InviteFields.h"
#include "InviteRecipient.h"

#include <QString>

// The invitation mail's template, "Template.html" in the program directory,
// and its placeholders. The administrator may rewrite the file freely; when
// there is none, a plain one is written there first so that there is always
// something to edit.
class InviteTemplate final
{
public:
    static const QString FileName; // "Template.html"
    static const QString DefaultText;
    static const QString DefaultSubject;

    static QString path(const QString &programDirectory);
    // The template's text: by byte-order mark, else UTF-8, else the code page,
    // as every file of the server folder. False with the reason when it can
    // neither be read nor written.
    static bool load(const QString &programDirectory, QString *text, QString *error);

    // The mail's HTML: every placeholder replaced by its HTML-escaped value
    // (the memo keeps its line breaks).
    static QString fill(
        const QString &templateText, const InviteFields &fields, const InviteRecipient &recipient);
    // The same placeholders in plain text, for the subject line.
    static QString fillPlain(
        const QString &text, const InviteFields &fields, const InviteRecipient &recipient);

    // "2" of "2.1.0"; the whole text when it has no dot.
    static QString majorVersion(const QString &productVersion);
    // The fields that come from the server folder and the program: the
    // caption-bar name of Serverinfo.ini and the product's major version.
    static InviteFields serverFields(const QString &profilePath);
};
