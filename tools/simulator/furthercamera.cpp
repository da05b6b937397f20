// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "furthercamera.h"

#include "fileio.h"
#include "mockedadapterline.h"
#include "pseudoterminalline.h"

#include <QTime>

namespace {

/// The first camera's port is called as given, and the number at the end of the others' is higher.
QString portNameOf(const QString &first, int number)
{
    int digits = 0;
    while (digits < first.size() && first.at(first.size() - 1 - digits).isDigit()) {
        ++digits;
    }
    return number == 1
        ? first
        : first.chopped(digits) + QString::number(first.right(digits).toLongLong() + number - 1);
}

} // namespace

std::unique_ptr<CameraLine> makeWire(const SimulatorOptions &options, int number)
{
    if (options.program.isEmpty()) {
        return std::make_unique<PseudoTerminalLine>();
    }
    return std::make_unique<MockedAdapterLine>(portNameOf(options.portName, number), number - 1);
}

FurtherCamera::FurtherCamera(const SimulatorOptions &options, int number, QObject *parent)
    : QObject(parent)
    , m_firmwarePath(
          options.firmwarePath.isEmpty()
              ? QString()
              : QStringLiteral("%1.%2").arg(options.firmwarePath, QString::number(number)))
    , m_log(options.withHex)
    , m_wire(makeWire(options, number))
    , m_line(*m_wire)
    , m_camera(options.camera, options.behaviour, m_log, m_line)
    , m_control(*m_wire, m_line, m_camera, options.seed + static_cast<quint32>(number - 1))
{
    m_line.setFaults(options.faults, options.seed + static_cast<quint32>(number - 1));
    connect(&m_control, &CameraControl::terminalPlugged, this, &FurtherCamera::terminalPlugged);
    connect(&m_control, &CameraControl::noted, this, &FurtherCamera::note);
    connect(&m_camera, &AnsweringCamera::logged, this, &FurtherCamera::printed);
    if (!m_firmwarePath.isEmpty()) {
        connect(&m_camera, &AnsweringCamera::firmwareReceived, this, &FurtherCamera::saveFirmware);
    }
}

FurtherCamera::~FurtherCamera() = default;

bool FurtherCamera::plug(QString *error)
{
    if (!m_firmwarePath.isEmpty() && !canWriteFile(m_firmwarePath, error)) {
        *error = cannotSave(*error);
        return false;
    }
    return m_control.plug(error);
}

QString FurtherCamera::obey(const QString &command)
{
    return m_control.obey(command);
}

void FurtherCamera::saveFirmware(const QByteArray &firmware)
{
    QString error;
    if (!writeFile(m_firmwarePath, firmware, &error)) {
        note(cannotSave(error));
        emit complained(cannotSave(error));
    }
}

QString FurtherCamera::cannotSave(const QString &reason) const
{
    return QStringLiteral("cannot save the firmware as %1: %2").arg(m_firmwarePath, reason);
}

void FurtherCamera::note(const QString &text)
{
    emit printed(m_log.notice(QTime::currentTime(), text));
}
