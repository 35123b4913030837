#include "AllocatorTuning.h"
#include "VelmarCtl.h"

#include <cstdio>
#include <QCoreApplication>
#include <QLoggingCategory>

int main(int argc, char *argv[])
{
    AllocatorTuning::prepare(argv);
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("velmarctl"));
    // The database layer's debug lines are for a debugger, not for the report.
    if (qEnvironmentVariableIsEmpty("QT_LOGGING_RULES"))
        QLoggingCategory::setFilterRules(QStringLiteral("default.debug=false"));

    VelmarCtl::Options options;
    QString message;
    bool helpShown = false;
    if (!VelmarCtl::parse(QCoreApplication::arguments(), options, message, helpShown)) {
        const QByteArray text = message.toUtf8() + '\n';
        std::fwrite(text.constData(), 1, size_t(text.size()), helpShown ? stdout : stderr);
        return helpShown ? VelmarCtl::Success : VelmarCtl::UsageError;
    }
    return VelmarCtl::run(options);
}
