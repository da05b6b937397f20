// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "memoryline.h"
#include "patience.h"
#include "recordingline.h"

#include <QSignalSpy>
#include <QTemporaryDir>

#include <csignal>

#include <sys/resource.h>

namespace {

/// No file of this process can grow beyond this size for as long as this object lives.
class FileSizeLimit {
public:
    explicit FileSizeLimit(qint64 size)
        : m_handlerBefore(std::signal(SIGXFSZ, SIG_IGN))
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        rlimit limit = m_before;
        limit.rlim_cur = static_cast<rlim_t>(size);
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    FileSizeLimit(const FileSizeLimit &) = delete;
    FileSizeLimit &operator=(const FileSizeLimit &) = delete;
    ~FileSizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handlerBefore);
    }

private:
    void (*m_handlerBefore)(int);
    rlimit m_before{};
};

} // namespace

class RecordingLineTest : public QObject {
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath("recording");
        m_error.clear();
    }

    void startsTheFileWithItsFormatAndTheTime()
    {
        MemoryLine inner;
        const QDateTime before = QDateTime::currentDateTimeUtc();
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        const QList<QByteArray> lines = contents().split('\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), QByteArray("# Corvane line recording 1"));
        QVERIFY(lines.at(1).startsWith("# started "));
        const auto time =
            QDateTime::fromString(QString::fromUtf8(lines.at(1).mid(10)), Qt::ISODate);
        QVERIFY2(qAbs(before.secsTo(time)) < 60, lines.at(1).constData());
        QCOMPARE(lines.at(2), QByteArray());
    }

    void passesEverythingOn()
    {
        MemoryLine inner;
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        QSignalSpy received(line.get(), &CameraLine::bytesReceived);
        QVERIFY(!line->isPlugged());
        QVERIFY(line->plug(&m_error));
        QVERIFY(inner.isPlugged());
        QVERIFY(line->isPlugged());
        line->write("AB");
        QCOMPARE(inner.written(), QByteArray("41 42"));
        inner.receive("01 02");
        QCOMPARE(received.size(), 1);
        QCOMPARE(received.at(0).at(0).toByteArray(), QByteArray("\x01\x02"));
        line->unplug();
        QVERIFY(!inner.isPlugged());
        QVERIFY(!line->isPlugged());
        inner.breakDown();
        QVERIFY(!line->plug(&m_error));
        QCOMPARE(m_error, QString("broken"));
    }

    void keepsEachEventAtOnceInItsOrder()
    {
        MemoryLine inner;
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        // A camera that answers at once.
        connect(line.get(), &CameraLine::bytesReceived, line.get(),
                [&line](const QByteArray &bytes) { line->write("re: " + bytes); });
        QVERIFY(line->plug(&m_error));
        QStringList expected{"plugged"};
        QCOMPARE(events(), expected);
        inner.receive("FF 0A");
        expected << "host   FF 0A"
                 << "camera 72 65 3A 20 FF 0A";
        QCOMPARE(events(), expected);
        line->write(QByteArray(1, '\0'));
        expected << "camera 00";
        QCOMPARE(events(), expected);
        line->unplug();
        expected << "unplugged";
        QCOMPARE(events(), expected);
        QVERIFY(line->plug(&m_error));
        expected << "plugged";
        QCOMPARE(events(), expected);
    }

    void tellsTheTimeSinceTheFirstEvent()
    {
        MemoryLine inner;
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        QElapsedTimer timer;
        timer.start();
        QTRY_VERIFY(timer.hasExpired(300));
        timer.start();
        QVERIFY(line->plug(&m_error));
        QElapsedTimer sincePlug;
        sincePlug.start();
        QTRY_VERIFY(sincePlug.hasExpired(50));
        line->write("x");
        const qint64 elapsed = timer.nsecsElapsed() / 1000;
        const auto recorded = Recording::parse(contents(), &m_error);
        QVERIFY2(recorded, qPrintable(m_error));
        QCOMPARE(recorded->size(), 2);
        QCOMPARE(recorded->at(0).time.count(), 0);
        VERIFY_AT_LEAST(recorded->at(1).time.count(), 50'000);
        VERIFY_AT_LEAST(elapsed, recorded->at(1).time.count());
    }

    void doesNotKeepWhatDoesNotPass()
    {
        MemoryLine inner;
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        line->write("unplugged");
        line->unplug();
        QCOMPARE(events(), QStringList());
        inner.breakDown();
        QVERIFY(!line->plug(&m_error));
        QCOMPARE(events(), QStringList());
    }

    void leavesAFileAloneThatExists()
    {
        QFile old(m_path);
        QVERIFY(old.open(QIODevice::WriteOnly));
        QCOMPARE(old.write("of yesterday"), qint64(12));
        old.close();
        MemoryLine inner;
        QVERIFY(!RecordingLine::create(inner, m_path, &m_error));
        QCOMPARE(
            m_error,
            QString("cannot record in %1: it exists, and what is in it would be lost").arg(m_path));
        QCOMPARE(contents(), QByteArray("of yesterday"));
    }

    void refusesAFileThatCannotBeMade()
    {
        MemoryLine inner;
        const QString path = m_folder->filePath("no/such/folder");
        QVERIFY(!RecordingLine::create(inner, path, &m_error));
        QCOMPARE(m_error, QString("cannot record in %1: No such file or directory").arg(path));

        const FileSizeLimit limit(10);
        QVERIFY(!RecordingLine::create(inner, m_path, &m_error));
        QCOMPARE(m_error, QString("cannot record in %1: File too large").arg(m_path));
        QVERIFY(!QFile::exists(m_path));
    }

    void saysOnceThatTheFileCannotBeWrittenAndGoesOn()
    {
        MemoryLine inner;
        const auto line = RecordingLine::create(inner, m_path, &m_error);
        QVERIFY2(line, qPrintable(m_error));
        QSignalSpy failed(line.get(), &RecordingLine::failed);
        QSignalSpy received(line.get(), &CameraLine::bytesReceived);
        QVERIFY(line->plug(&m_error));
        const QByteArray before = contents();
        {
            // Room for part of an event.
            const FileSizeLimit limit(before.size() + 10);
            line->write("lost");
            QCOMPARE(failed.size(), 1);
            QCOMPARE(failed.at(0).at(0).toString(),
                     QString("cannot go on recording in %1: File too large").arg(m_path));
        }
        inner.receive("01");
        line->unplug();
        QCOMPARE(failed.size(), 1);
        QCOMPARE(inner.written(), QByteArray("6C 6F 73 74"));
        QCOMPARE(received.size(), 1);
        QVERIFY(!inner.isPlugged());
        QCOMPARE(contents(), before);
    }

private:
    /// The lines of the file from the first event on, without their times.
    QStringList events() const
    {
        QStringList events;
        const QStringList lines = QString::fromUtf8(contents()).split('\n');
        for (const QString &line : lines) {
            if (!line.isEmpty() && !line.startsWith('#')) {
                events << line.mid(line.indexOf(' ') + 1);
            }
        }
        return events;
    }

    QByteArray contents() const
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    QString m_error;
};

QTEST_GUILESS_MAIN(RecordingLineTest)
#include "tst_recordingline.moc"
