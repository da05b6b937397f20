// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "furthercamera.h"

#include "fileio.h"
#include "mockedadapterline.h"
#include "pseudoterminalline.h"

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
    , m_firmwarePath(options.firmwarePath.isEmpty()
                         ? QString()
                         : QStringLiteral("%1.%2").arg(options.firmwarePath).arg(number))
    , m_wire(makeWire(options, number))
    , m_line(*m_wire)
    , m_camera(options.camera, options.behaviour, ExchangeLog(options.withHex), m_line)
{
    m_line.setFaults(options.faults, options.seed + static_cast<quint32>(number - 1));
    connect(&m_line, &FaultyLine::hungUp, &m_camera, &AnsweringCamera::lineLost);
    connect(&m_camera, &AnsweringCamera::logged, this, &FurtherCamera::printed);
    if (!m_firmwarePath.isEmpty()) {
        connect(&m_camera, &AnsweringCamera::firmwareReceived, this, &FurtherCamera::saveFirmware);
    }
}

FurtherCamera::~FurtherCamera() = default;

bool FurtherCamera::plug(QString *error)
{
    return m_line.plug(error);
}

QString FurtherCamera::terminalName() const
{
    const auto *const terminal = qobject_cast<PseudoTerminalLine *>(m_wire.get());
    return terminal != nullptr ? terminal->portName() : QString();
}

void FurtherCamera::saveFirmware(const QByteArray &firmware)
{
    QString error;
    if (!writeFile(m_firmwarePath, firmware, &error)) {
        emit complained(
            QStringLiteral("cannot save the firmware as %1: %2").arg(m_firmwarePath, error));
    }
}
