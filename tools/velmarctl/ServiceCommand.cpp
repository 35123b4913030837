#include "ServiceCommand.h"

#include "ConsoleOutput.h"
#include "ProgramLauncher.h"
#include "ServerNotification.h"
#include "ServerNotifier.h"
#include "ServerServices.h"
#include "ServiceClock.h"
#include "ServiceControl.h"
#include "VelmarCtl.h"

#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

QString stateWord(ServiceControl::State state)
{
    switch (state) {
    case ServiceControl::State::Running:
        return u"running"_s;
    case ServiceControl::State::Stopped:
        return u"stopped"_s;
    case ServiceControl::State::StartPending:
        return u"start-pending"_s;
    case ServiceControl::State::StopPending:
        return u"stop-pending"_s;
    case ServiceControl::State::NotInstalled:
        return u"not-installed"_s;
    case ServiceControl::State::Unreachable:
        break;
    }
    return u"unreachable"_s;
}

class Printer final : public ServerServices::Observer
{
public:
    void starting(const QString &name) override { printLine(stdout, u"starting "_s + name); }
    void started(const QString &name, bool ok) override
    {
        if (ok) {
            printLine(stdout, name + u" started"_s);
            return;
        }
        failed = true;
        // The console drops this text; a shell run shows it.
        printLine(stdout, ServerServices::startFailureText(name));
    }
    void stopping(const QString &name) override { printLine(stdout, u"stopping "_s + name); }
    void stopped(const QString &name, bool ok) override
    {
        failed = failed || !ok;
        printLine(stdout, ok ? name + u" stopped"_s : name + u" did not stop"_s);
    }
    void killing(const QString &name) override { printLine(stdout, u"pskill "_s + name); }

    bool failed = false;
};

void printStates(const ServerServices &services)
{
    for (const auto &[name, state] : services.states())
        printLine(stdout, u"%1\t%2"_s.arg(name, stateWord(state)));
}

} // namespace

namespace ServiceCommand {

int runServices(const QString &action, const QString &serverDir)
{
    std::unique_ptr<ServiceManager> manager = ServiceManager::createPlatformManager();
    ThreadSleepClock clock;
    DetachedProcessLauncher launcher;
    ServiceControl control(*manager, clock, launcher, serverDir);
    ServerServices services(control);

    if (!manager->openManager())
        printLine(stderr, u"velmarctl: the service manager cannot be reached"_s);

    Printer printer;
    if (action == u"start"_s) {
        switch (services.StartAllServices(&printer)) {
        case ServerServices::StartOutcome::AllRunning:
            printLine(stdout, u"every service is running: nothing to start"_s);
            break;
        case ServerServices::StartOutcome::AlreadyInProgress:
            printLine(stdout, u"a start is already under way"_s);
            break;
        case ServerServices::StartOutcome::Ran:
            break;
        }
    } else if (action == u"stop"_s) {
        services.StopAllServices(&printer);
    }
    if (action != u"status"_s) {
        printLine(stdout,
            u"start command %1, stop command %2"_s.arg(
                services.isStartEnabled() ? u"enabled"_s : u"greyed"_s,
                services.isStopEnabled() ? u"enabled"_s : u"greyed"_s));
    }
    printStates(services);
    return printer.failed ? VelmarCtl::ServiceFailed : VelmarCtl::Success;
}

int runNotify(quint16 port, quint16 code)
{
    if (!SendServerNotification(port, code)) {
        printLine(stderr, u"velmarctl: "_s + ServerNotifier::failureText());
        return VelmarCtl::NotifyFailed;
    }
    printLine(stdout,
        u"sent %1 bytes to 127.0.0.1:%2, code 0x%3"_s.arg(ServerNotification::DatagramSize)
            .arg(port)
            .arg(QString::number(code, 16).toUpper().rightJustified(4, u'0')));
    return 0;
}

bool parseNumber(const QString &text, quint16 &value, quint16 minimum)
{
    bool ok = false;
    const uint number = text.startsWith(u"0x"_s, Qt::CaseInsensitive) ? text.mid(2).toUInt(&ok, 16)
                                                                      : text.toUInt(&ok, 10);
    if (!ok || number < minimum || number > 0xFFFF)
        return false;
    value = quint16(number);
    return true;
}

} // namespace ServiceCommand
