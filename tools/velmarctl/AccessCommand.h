#pragma once

#include <cstdio>
#include <QString>

class CVelmarManagerDoc;

// "velmarctl access member USERID" and "velmarctl access folder PATH": the
// rows the file box's access overview shows for a member or a folder, one
// per line, from the loaded document.
class AccessCommand
{
public:
    enum class Format { Tsv, Json };

    struct Options
    {
        bool folder = false; // false: a member by user ID
        QString subject; // the user ID or the folder path
        Format format = Format::Tsv;
    };

    // Prints the rows to out. Returns false (nothing printed) when no member
    // has the user ID or no folder has the path; the reason is in error.
    static bool run(
        const Options &options, const CVelmarManagerDoc &document, FILE *out, QString *error);
};
