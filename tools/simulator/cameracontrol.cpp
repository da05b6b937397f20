// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "cameracontrol.h"

#include "answeringcamera.h"
#include "faultyline.h"
#include "pseudoterminalline.h"
#include "simulatoroptions.h"

CameraControl::CameraControl(CameraLine &wire, FaultyLine &line, CameraEnd &camera, quint32 seed,
                             QObject *parent)
    : QObject(parent)
    , m_wire(wire)
    , m_line(line)
    , m_camera(camera)
    , m_seed(seed)
{
    connect(&m_line, &FaultyLine::faultApplied, this, &CameraControl::noted);
    connect(&m_line, &FaultyLine::hungUp, this, &CameraControl::lineLost);
    connect(&m_camera, &CameraEnd::plugDue, this, &CameraControl::plugIfNot);
    connect(&m_camera, &CameraEnd::unplugDue, this, &CameraControl::unplugIfPlugged);
}

bool CameraControl::plug(QString *error)
{
    if (!m_line.plug(error)) {
        return false;
    }
    if (const auto *terminal = qobject_cast<PseudoTerminalLine *>(&m_wire)) {
        emit terminalPlugged(terminal->portName());
    }
    return true;
}

QString CameraControl::obey(const QString &command)
{
    if (command == QLatin1String("unplug")) {
        if (!m_wire.isPlugged()) {
            return QStringLiteral("not plugged");
        }
        unplugIfPlugged();
    } else if (command == QLatin1String("plug")) {
        if (m_wire.isPlugged()) {
            return QStringLiteral("already plugged");
        }
        QString error;
        if (!plug(&error)) {
            return error;
        }
        emit noted(QStringLiteral("plugged"));
    } else if (command == QLatin1String("silent on")) {
        return setSilent(true);
    } else if (command == QLatin1String("silent off")) {
        return setSilent(false);
    } else if (command.startsWith(QLatin1String("faults "))) {
        return setFaults(command.section(QLatin1Char(' '), 1));
    } else {
        constexpr int kShown = 40;
        return QStringLiteral("unknown command '%1', see help").arg(command.left(kShown));
    }
    return {};
}

void CameraControl::plugIfNot()
{
    QString error;
    if (m_wire.isPlugged()) {
        return;
    }
    if (plug(&error)) {
        emit noted(QStringLiteral("plugged"));
    } else {
        emit failed(error);
    }
}

void CameraControl::unplugIfPlugged()
{
    if (m_wire.isPlugged()) {
        m_line.unplug();
        lineLost();
    }
}

void CameraControl::lineLost()
{
    m_camera.lineLost();
    emit noted(QStringLiteral("unplugged"));
}

// Returns why it could not, or an empty text.
QString CameraControl::setFaults(const QString &planAndSeed)
{
    QString error;
    const auto plan = FaultPlan::parse(planAndSeed.section(QLatin1Char(' '), 0, 0), &error);
    if (!plan) {
        return error;
    }
    const QString seedText = planAndSeed.section(QLatin1Char(' '), 1);
    const auto seed = seedText.isEmpty() ? m_seed : faultSeedFrom(seedText);
    if (!seed) {
        return QStringLiteral("the seed is a number from 0 to 4294967295, not '%1'").arg(seedText);
    }
    m_line.setFaults(*plan, *seed);
    emit noted(QStringLiteral("faults %1, seed %2").arg(plan->toString(), QString::number(*seed)));
    return {};
}

// Returns why it could not, or an empty text.
QString CameraControl::setSilent(bool silent)
{
    auto *const camera = qobject_cast<AnsweringCamera *>(&m_camera);
    if (camera == nullptr) {
        return QStringLiteral("there is no simulated camera");
    }
    camera->setSilent(silent);
    emit noted(silent ? QStringLiteral("silent on") : QStringLiteral("silent off"));
    return {};
}
