// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include "cameraline.h"

#include <QByteArray>
#include <QString>

#include <memory>

class CameraTerminal;

/// A line that the host finds as a USB serial adapter in the list of serial ports.
///
/// libumockdev keeps a folder with a made-up /sys and /dev, named by the environment variable
/// UMOCKDEV_DIR, and its preload library shows them to a program in the place of the real ones. The
/// adapter is described there, as the kernel and udev would describe it, and its device node is a
/// pseudo-terminal. The device node is put there by this class: the library would make one, but not
/// a second time after it was removed, and would not hang up on the host.
///
/// Programs started after such an object was made see the adapter while it is plugged, if the
/// preload library is loaded into them (see PreloadLibrary).
class MockedAdapterLine : public CameraLine {
    Q_OBJECT

public:
    /// @param portName  such as ttyUSB0: the name in /dev and in the list of ports
    /// @param place     in which of the hub's sockets it is, 0 and up; another one for each adapter
    explicit MockedAdapterLine(QString portName, int place = 0, QObject *parent = nullptr);
    /// Unplugs the line. The last one removes the folder.
    ~MockedAdapterLine() override;

    bool plug(QString *error) override;
    void unplug() override;
    bool isPlugged() const override;
    void write(const QByteArray &bytes) override;

private:
    class Testbed;

    QString devicePath() const;

    QByteArray inserted(const char *text) const;

    QString m_portName;
    int m_place;
    std::shared_ptr<Testbed> m_testbed;         ///< that of all adapters of this process
    std::unique_ptr<CameraTerminal> m_terminal; ///< null while unplugged
};
