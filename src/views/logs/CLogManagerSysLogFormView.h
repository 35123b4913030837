#pragma once

#include "LogFormView.h"

// The system log view: one row per timestamped line of the daemons' system logs.
class CLogManagerSysLogFormView final : public LogFormView
{
    Q_OBJECT

public:
    explicit CLogManagerSysLogFormView(const LogViewContext &context, QWidget *parent = nullptr);

protected:
    void rowSelected(int) override { }
};
