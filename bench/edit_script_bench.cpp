// Parses a generated edit script of 100,000 lines (member adds with options,
// placements, permission and position lines) and prints the median of five
// parse times. Not a test: run by hand, see README "Tests and benchmarks".
#include "EditScript.h"

#include <algorithm>
#include <cstdio>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <vector>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    constexpr int Lines = 100000;
    QByteArray script;
    script.reserve(Lines * 64);
    for (int i = 0; i < Lines; ++i) {
        const QByteArray n = QByteArray::number(i);
        switch (i % 4) {
        case 0:
            script += "member add user" + n + " --name '成员 " + n
                + "' --password \"p\\\"w\" --birthday 1990-02-28 --female\n";
            break;
        case 1:
            script += "place /总部/\"销售 部\"/East user" + n + "\n";
            break;
        case 2:
            script += "permission set user" + n + " chat=off voip=on sms=off\n";
            break;
        default:
            script += "# comment " + n + "\n\n";
            break;
        }
    }

    std::vector<qint64> times;
    qsizetype commands = 0;
    for (int run = 0; run < 5; ++run) {
        QElapsedTimer timer;
        timer.start();
        const EditScript::Result result = EditScript::parse(script);
        times.push_back(timer.nsecsElapsed());
        if (!result.ok()) {
            std::fprintf(stderr, "%s\n", qPrintable(result.error));
            return 1;
        }
        commands = result.commands.size();
    }
    std::sort(times.begin(), times.end());
    std::printf("edit script: %d lines, %lld bytes, %lld commands, parse median %.1f ms\n",
        Lines + Lines / 4, static_cast<long long>(script.size()), static_cast<long long>(commands),
        double(times[2]) / 1e6);
    return 0;
}
