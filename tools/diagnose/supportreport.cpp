// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "supportreport.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSysInfo>

#include <algorithm>
#include <vector>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace {

QJsonObject object(const KernelLines &kernel)
{
    QJsonObject result{{QStringLiteral("lines"), QJsonArray::fromStringList(kernel.lines)}};
    if (!kernel.systemText.isEmpty()) {
        result[QStringLiteral("systemError")] = kernel.systemText;
    }
    return result;
}

/// Who runs this program, also with sudo; null when that is not known.
const passwd *userOfProgram()
{
    bool isKnown = false;
    const int user = qEnvironmentVariableIntValue("SUDO_UID", &isKnown);
    return ::getpwuid(isKnown && ::geteuid() == 0 ? static_cast<uid_t>(user) : ::geteuid());
}

QString withoutHome(const QString &path, const QString &home)
{
    return path.startsWith(home + QLatin1Char('/')) ? QLatin1Char('~') + path.mid(home.size())
                                                    : path;
}

} // namespace

QJsonObject jsonObject(const PortIdentity &identity)
{
    return {{QStringLiteral("port"), identity.port},
            {QStringLiteral("description"), identity.description},
            {QStringLiteral("usbNumbers"), identity.usbNumbers},
            {QStringLiteral("serialNumber"), identity.serialNumber},
            {QStringLiteral("manufacturer"), identity.manufacturer},
            {QStringLiteral("driver"), identity.driver},
            {QStringLiteral("byIdName"), identity.byIdName},
            {QStringLiteral("usbPath"), identity.usbPath}};
}

QString reportContents()
{
    return QStringLiteral(
        "the verdict and its evidence; the adapter's USB numbers, serial number, driver and name; "
        "the groups of the user; the versions of Corvane, Qt and the kernel; and the kernel's last "
        "lines about the port, if they may be read. Nothing else about this computer and its "
        "user.");
}

PortFinding withoutNames(PortFinding finding)
{
    const QString user = QStringLiteral("$USER");
    if (finding.owner == finding.user) {
        finding.owner = user;
    }
    finding.user = user;
    const passwd *const entry = userOfProgram();
    const QString home = entry != nullptr ? QFile::decodeName(entry->pw_dir) : QDir::homePath();
    if (!home.isEmpty()) {
        finding.port = withoutHome(finding.port, home);
        finding.devicePath = withoutHome(finding.devicePath, home);
    }
    return finding;
}

QStringList ownGroups()
{
    const passwd *const entry = userOfProgram();
    const QString user = entry != nullptr ? QString::fromLocal8Bit(entry->pw_name) : QString();
    const bool isWithSudo = entry != nullptr && entry->pw_uid != ::geteuid();
    int count = ::getgroups(0, nullptr);
    if (isWithSudo) {
        // Those of this process are root's.
        count = 0;
        ::getgrouplist(entry->pw_name, entry->pw_gid, nullptr, &count);
    }
    std::vector<gid_t> groups(static_cast<std::size_t>(std::max(count, 0)));
    if (isWithSudo) {
        ::getgrouplist(entry->pw_name, entry->pw_gid, groups.data(), &count);
    } else if (::getgroups(count, groups.data()) >= 0) {
        groups.push_back(::getegid());
    }
    QStringList names;
    for (const gid_t group : groups) {
        const ::group *const found = ::getgrgid(group);
        const QString name =
            found != nullptr ? QString::fromLocal8Bit(found->gr_name) : QString::number(group);
        if (name != user && !names.contains(name)) {
            names += name;
        }
    }
    return names;
}

QByteArray supportReport(const QVector<ReportedPort> &ports)
{
    QJsonArray diagnoses;
    for (const ReportedPort &port : ports) {
        QJsonObject diagnosis = port.diagnosis;
        diagnosis[QStringLiteral("identity")] = jsonObject(port.identity);
        diagnosis[QStringLiteral("kernel")] = object(port.kernel);
        diagnoses += diagnosis;
    }
    const QJsonObject versions{{QStringLiteral("corvane"), QCoreApplication::applicationVersion()},
                               {QStringLiteral("qt"), QString::fromLatin1(qVersion())},
                               {QStringLiteral("kernel"), QSysInfo::kernelVersion()},
                               {QStringLiteral("system"), QSysInfo::prettyProductName()}};
    const QJsonObject report{{QStringLiteral("contents"), reportContents()},
                             {QStringLiteral("versions"), versions},
                             {QStringLiteral("groups"), QJsonArray::fromStringList(ownGroups())},
                             {QStringLiteral("diagnoses"), diagnoses}};
    return QJsonDocument(report).toJson();
}
