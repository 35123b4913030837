#pragma once

#include <QString>

// What the loading steps tell the progress dialog: one line of text, a range
// set to a row count and a position set to the rows handled so far. The
// loading worker implements it with queued signals; velmarctl and tests with
// plain recorders.
class LoadProgress
{
public:
    virtual ~LoadProgress() = default;
    virtual void setText(const QString &text) = 0;
    virtual void setRange(int maximum) = 0;
    virtual void setPosition(int position) = 0;
};
