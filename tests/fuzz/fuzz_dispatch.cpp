// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

// Whatever frame is accepted: the window survives it, and then shows what it says. The window is
// built once and goes from frame to frame, as it does on a line.

#include "fuzztarget.h"
#include "mainwindow.h"
#include "require.h"
#include "signedbytes.h"

#include <QApplication>
#include <QComboBox>
#include <QRadioButton>
#include <QTextEdit>

#include <array>

namespace {

/// The log is unwanted; but what Qt ends the program for is a finding.
void dropMessage(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    require(type != QtFatalMsg, qPrintable(message));
}

/// The environment of a program without display. Set up before Qt looks at it.
struct Environment {
    Environment()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qInstallMessageHandler(dropMessage);
    }
};

/// What the window is to show after the frames that it got.
struct Shown {
    QString version;
    QString pane;
    int targetMissing = 0;
    int autoTracking = 0;
    int autoZoom = 0;
    int zoomOffset = 0;
    bool upsideDown = false;
};

QString hexadecimal(int number)
{
    return (number < 0 ? QStringLiteral("-") : QString()) + QString::number(std::abs(number), 16);
}

/// A combo box shows nothing for an index that it does not have.
int indexIn(const QComboBox &box, int index)
{
    return index >= 0 && index < box.count() ? index : -1;
}

/// A window, and what it is to show. Never destroyed: it lives until the process ends.
class ProgramFixture {
public:
    static ProgramFixture &instance()
    {
        static auto *const fixture = new ProgramFixture;
        return *fixture;
    }

    void deliver(const std::uint8_t *data, std::size_t size)
    {
        const QByteArray frame(reinterpret_cast<const char *>(data), static_cast<int>(size));
        require(QMetaObject::invokeMethod(&m_window, "AnalyzeReceiveData", Qt::DirectConnection,
                                          Q_ARG(QByteArray, frame)),
                "the window takes a frame");
        // What a change posts would otherwise pile up.
        QCoreApplication::sendPostedEvents();

        expect(SignedBytes(data, size), size);
        compare();
    }

private:
    template <typename Type> Type &child(const char *name)
    {
        auto *const found = m_window.findChild<Type *>(QLatin1String(name));
        require(found != nullptr, name);
        return *found;
    }

    void expect(const SignedBytes &byte, std::size_t size)
    {
        constexpr int kAcknowledged = 5;
        if (byte[9] != kAcknowledged) {
            return;
        }
        const int command = byte[10];
        if (command == 22 || (command == 85 && size >= 14)) {
            expectSettings(byte);
        } else if (command == 85) {
            expectVersion();
        } else if (command == 58) {
            expectVersion();
            m_shown.pane += QStringLiteral("\nSetting custom zoom: ")
                + QString::number(byte[12] * 256 + byte[13]);
        }
    }

    void expectVersion() { m_shown.pane = QStringLiteral("Device Version: ") + m_shown.version; }

    void expectSettings(const SignedBytes &byte)
    {
        m_shown.version = hexadecimal(byte[12]) + '.' + hexadecimal(byte[13]) + '.'
            + hexadecimal(byte[14]) + '.' + hexadecimal(byte[15]);
        expectVersion();
        const bool pan = byte[21] != 0;
        const bool tilt = byte[22] != 0;
        m_shown.autoTracking = pan && tilt ? 1 : (pan ? 2 : (tilt ? 3 : 0));
        m_shown.upsideDown = byte[19] != 0 && byte[20] != 0;
        m_shown.targetMissing = indexIn(m_targetMissing, byte[16]);
        m_shown.autoZoom = byte[23] != 0 ? 1 : 0;
        m_shown.zoomOffset = indexIn(m_zoomOffset, byte[24]);
        m_settingsCame = true;
    }

    void compare() const
    {
        require(m_pane.toPlainText() == m_shown.pane, "the pane says what the last reply says");
        if (!m_settingsCame) {
            return;
        }
        require(m_targetMissing.currentIndex() == m_shown.targetMissing, "target missing is shown");
        require(m_autoTracking.currentIndex() == m_shown.autoTracking, "the tracking is shown");
        require(m_autoZoom.currentIndex() == m_shown.autoZoom, "auto zoom is shown");
        require(m_zoomOffset.currentIndex() == m_shown.zoomOffset, "the zoom offset is shown");
        require(m_upsideDown.isChecked() == m_shown.upsideDown
                    && m_upright.isChecked() != m_shown.upsideDown,
                "the direction is shown");
    }

    int m_argumentCount = 1;
    QByteArray m_name = "corvane";
    std::array<char *, 2> m_arguments{m_name.data(), nullptr};
    Environment m_environment;
    QApplication m_application{m_argumentCount, m_arguments.data()};
    MainWindow m_window;
    QTextEdit &m_pane = child<QTextEdit>("textEdit_device_info");
    QComboBox &m_targetMissing = child<QComboBox>("comboBox_targetmissing");
    QComboBox &m_autoTracking = child<QComboBox>("comboBox_autotracking");
    QComboBox &m_autoZoom = child<QComboBox>("comboBox_autozoom");
    QComboBox &m_zoomOffset = child<QComboBox>("comboBox_zoomoffset");
    QRadioButton &m_upright = child<QRadioButton>("radioButton_upright");
    QRadioButton &m_upsideDown = child<QRadioButton>("radioButton_upside_down");
    Shown m_shown;
    bool m_settingsCame = false;
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ProgramFixture::instance().deliver(data, size);
    return 0;
}
