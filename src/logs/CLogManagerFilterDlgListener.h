#pragma once

#include "LogFilter.h"

// The filter panel hands each search to its owning log view through this.
class CLogManagerFilterDlgListener
{
public:
    virtual ~CLogManagerFilterDlgListener() = default;
    // Refills the view for the period of filter.
    virtual void applyFilter(const LogFilter &filter) = 0;

protected:
    CLogManagerFilterDlgListener() = default;
    CLogManagerFilterDlgListener(const CLogManagerFilterDlgListener &) = default;
    CLogManagerFilterDlgListener &operator=(const CLogManagerFilterDlgListener &) = default;
};
