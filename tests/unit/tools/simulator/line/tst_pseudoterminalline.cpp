// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "pseudoterminalline.h"

#include <array>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

/// Holds the host's end of a line open; without a care for its terminal settings, as those are the
/// line's business.
class Host {
public:
    explicit Host(const QString &portName)
        : m_descriptor(::open(qPrintable(portName), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC))
    {
    }
    Host(const Host &) = delete;
    Host &operator=(const Host &) = delete;
    ~Host() { ::close(m_descriptor); }

    bool isOpen() const { return m_descriptor >= 0; }
    bool write(const QByteArray &bytes) const
    {
        return ::write(m_descriptor, bytes.constData(), static_cast<std::size_t>(bytes.size()))
            == bytes.size();
    }
    /// Everything that has come so far.
    QByteArray read()
    {
        std::array<char, 256> buffer{};
        const ssize_t count = ::read(m_descriptor, buffer.data(), buffer.size());
        if (count > 0) {
            m_read.append(buffer.data(), static_cast<int>(count));
        }
        return m_read;
    }
    /// How many bytes have come that were not read.
    int unread() const
    {
        int count = -1;
        return ::ioctl(m_descriptor, FIONREAD, &count) == 0 ? count : -1;
    }
    bool isHungUpOn() const
    {
        pollfd state{m_descriptor, POLLIN, 0};
        return ::poll(&state, 1, 0) == 1 && (state.revents & POLLHUP) != 0;
    }

private:
    int m_descriptor;
    QByteArray m_read;
};

/// Everything that a line has received since this object was made.
class Received {
public:
    explicit Received(PseudoTerminalLine &line)
        : m_spy(&line, &CameraLine::bytesReceived)
    {
    }
    QByteArray bytes() const
    {
        QByteArray all;
        for (const QList<QVariant> &arguments : m_spy) {
            all += arguments.at(0).toByteArray();
        }
        return all;
    }

private:
    QSignalSpy m_spy;
};

// Bytes that a terminal would echo, translate or act upon, unless set not to.
QByteArray allBytes()
{
    QByteArray bytes;
    for (int i = 0; i < 256; ++i) {
        bytes.append(static_cast<char>(i));
    }
    return bytes;
}

} // namespace

class PseudoTerminalLineTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_line = std::make_unique<PseudoTerminalLine>();
        QString error;
        QVERIFY2(m_line->plug(&error), qPrintable(error));
    }

    void carriesEveryByteBothWays()
    {
        const Received received(*m_line);
        Host host(m_line->portName());
        QVERIFY(host.isOpen());
        QVERIFY(host.write(allBytes()));
        QVERIFY(happensWithin(std::chrono::milliseconds(20),
                              [&received] { return received.bytes() == allBytes(); }));
        QCOMPARE(host.read(), QByteArray());
        m_line->write(allBytes());
        QTRY_COMPARE(host.read(), allBytes());
        QCOMPARE(received.bytes(), allBytes());
    }

    void survivesHostsThatComeAndGo()
    {
        const Received received(*m_line);
        for (const char *text : {"one", "two", "three"}) {
            const QByteArray bytes(text);
            Host host(m_line->portName());
            QVERIFY(host.write(bytes));
            QTRY_VERIFY(received.bytes().endsWith(bytes));
            m_line->write(bytes);
            QTRY_COMPARE(host.read(), bytes);
        }
        QCOMPARE(received.bytes(), QByteArray("onetwothree"));
    }

    void hearsAHostThatIsGoneAtOnce()
    {
        const Received received(*m_line);
        for (int i = 0; i < 3; ++i) {
            Host host(m_line->portName());
            QVERIFY(host.write("x"));
        }
        QTRY_COMPARE(received.bytes(), QByteArray("xxx"));
    }

    void losesWhatIsSentToNobody()
    {
        m_line->write("lost");
        {
            Host host(m_line->portName());
            QCOMPARE(host.read(), QByteArray());
        }
        m_line->write("lost");
        Host host(m_line->portName());
        m_line->write("heard");
        QTRY_COMPARE(host.read(), QByteArray("heard"));
    }

    void losesWhatTheLastHostLeft()
    {
        const Received received(*m_line);
        {
            Host host(m_line->portName());
            m_line->write("left");
            QVERIFY(host.write("1"));
            QTRY_COMPARE(received.bytes(), QByteArray("1"));
        }
        // A host that comes before the line has seen the last one go still finds it.
        QTRY_COMPARE(Host(m_line->portName()).unread(), 0);
    }

    void hangsUpWhenUnplugged()
    {
        const QString portName = m_line->portName();
        const Host host(portName);
        QVERIFY(!host.isHungUpOn());
        m_line->unplug();
        QVERIFY(!m_line->isPlugged());
        QVERIFY(host.isHungUpOn());
        QVERIFY(!QFile::exists(portName));
        QCOMPARE(m_line->portName(), QString());
        m_line->write("lost");
    }

    void canBePluggedAgain()
    {
        m_line->unplug();
        QString error;
        QVERIFY2(m_line->plug(&error), qPrintable(error));
        QVERIFY(m_line->isPlugged());
        const Received received(*m_line);
        Host host(m_line->portName());
        QVERIFY(host.write("again"));
        QTRY_COMPARE(received.bytes(), QByteArray("again"));
    }

private:
    std::unique_ptr<PseudoTerminalLine> m_line;
};

QTEST_GUILESS_MAIN(PseudoTerminalLineTest)
#include "tst_pseudoterminalline.moc"
