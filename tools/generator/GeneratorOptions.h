#pragma once

#include <QDate>
#include <QString>
#include <QStringList>

// What to generate. Counts are totals: guests are part of the members, and
// groups are per tree (the regular and the guest tree get that many each).
struct GeneratorOptions
{
    QString outDir;
    QString registryDir; // empty: <outDir>/registry
    int members = 60;
    int guests = 8;
    int groups = 12;
    int depth = 3;
    int memberships = 90;
    int positions = 8;
    int permissions = 60; // AccessToken rows, and as many VoipInfo rows
    int pool = 30;
    int notices = 3;
    int folders = 8;
    int rights = 20;
    quint64 seed = 20071008;
    bool logs = false;
    QDate referenceDate; // notices and logs are dated up to this day

    // "demo" or "bench"; false for an unknown name.
    bool applyPreset(const QString &name);
    // Counts clamped to what the rest of the data can hold; a description of
    // each adjustment is appended to notes.
    void normalise(QStringList *notes);
};
