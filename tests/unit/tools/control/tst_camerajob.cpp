// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "camerajob.h"
#include "fakeline.h"
#include "frames.h"
#include "patience.h"
#include "rows.h"

#include <memory>

/// What each command does with one camera, without a port and without waiting.
class CameraJobTest : public QObject {
    Q_OBJECT

private slots:
    void init() { m_order = {}; }

    void cleanup() { QCOMPARE(m_steps.count("ended"), m_job->hasEnded() ? 1 : 0); }

    void asksFirst_data()
    {
        addRows<QString, bool>({"line", "asks"},
                               {{"list", "list --probe", true},
                                {"info", "info p", true},
                                {"save", "save p f", true},
                                {"diff", "diff f p", true},
                                {"apply", "apply f p", false},
                                {"apply to all", "apply f --all", true},
                                {"set", "set auto-zoom=on p", true},
                                {"zoom", "zoom 1 p", false},
                                {"zoom on all", "zoom 1 --all", true},
                                {"upgrade", "upgrade i p", true}});
    }

    void asksFirst()
    {
        QFETCH(QString, line);
        start(line);
        const QByteArray written = m_line->written();
        QTEST(written == Hex::hello(), "asks");
        QVERIFY(!written.isEmpty());
    }

    void reportsTheCamera()
    {
        start("info p");
        m_line->send(Hex::helloReply());
        QCOMPARE(outcome(), QString("done"));
        QCOMPARE(result().version, QString("1.0.0.6"));
        QCOMPARE(cameraSettingsPayload(*result().settings).toHex(), QByteArray("0101000101"));
        QCOMPARE(m_line->written(), Hex::hello());
        QVERIFY(!m_line->hasAlarm());
    }

    void saysWhyNoneAnswers_data()
    {
        addRows<QByteArray, QString>(
            {"bytes", "outcome"},
            {{"nothing", "", "failed: silent"},
             {"the request", Hex::hello(), "failed: echo"},
             {"noise", "01 02 03", "failed: no-frame"},
             {"a wrong sum", Hex::helloReply().chopped(2) + "9D", "failed: wrong-sums"},
             {"a part", Hex::helloReply().left(60), "failed: broken-off"}});
    }

    void saysWhyNoneAnswers()
    {
        QFETCH(QByteArray, bytes);
        start("info p");
        m_line->send(bytes);
        m_line->pass(4999);
        QVERIFY(!m_job->hasEnded());
        QVERIFY(m_job->isCamera());
        m_line->pass(1);
        QTEST(outcome(), "outcome");
        QVERIFY(!m_job->isCamera());
    }

    void countsWhatCame()
    {
        start("info p");
        m_line->send("01 02 03");
        m_line->pass(5000);
        QCOMPARE(result().reason.sentence,
                 QString("3 bytes came, but no frame. The first: 01 02 03."));
    }

    void refusesAShortReport()
    {
        start("info p");
        m_line->send("FF FF 0E 41 01 06 07 06 09 05 16 00 01 00 00 06 8E");
        QCOMPARE(outcome(), QString("failed: answer-short"));
        QCOMPARE(advice(),
                 QString("The camera answered, but its answer is too short: 17 bytes instead of "
                         "26. Its firmware is older or newer than this program knows."));
        QVERIFY(!result().settings); // which are not all known
        QVERIFY(m_job->isCamera());
    }

    void appliesTheFile()
    {
        m_order.settings = {2, 9, true, 0, 3};
        start("apply f p");
        QCOMPARE(m_line->written(), Hex::settings());
        m_line->send(panning("55", "E5"));
        QCOMPARE(outcome(), QString("done"));
    }

    void asksAfterAShortAcknowledgement_data()
    {
        addRows<QByteArray>(
            {"acknowledgement"},
            {{"none of the settings", Frames::settingsAcknowledgement().toHex()},
             {"some of the settings", "FF FF 0E 41 01 06 07 06 09 05 55 00 01 00 00 06 CD"}});
    }

    void asksAfterAShortAcknowledgement()
    {
        QFETCH(QByteArray, acknowledgement);
        m_order.settings = {2, 9, true, 0, 3};
        start("apply f p");
        m_line->written();
        m_line->send(acknowledgement);
        QCOMPARE(m_line->written(), Hex::hello());
        m_line->send(panning("16", "A6"));
        QCOMPARE(outcome(), QString("done"));
    }

    void comparesTheReply_data()
    {
        addRows<QByteArray>({"acknowledgement"},
                            {{"long", ""}, {"short", Frames::settingsAcknowledgement().toHex()}});
    }

    void comparesTheReply()
    {
        QFETCH(QByteArray, acknowledgement);
        m_order.settings = {2, 8, true, 1, 3};
        start("apply f p");
        m_line->send(acknowledgement);
        m_line->send(acknowledgement.isEmpty() ? panning("55", "E5") : panning("16", "A6"));
        QCOMPARE(outcome(), QString("failed: not-taken"));
        QCOMPARE(advice(),
                 QString("The camera acknowledged the settings, but has not taken all: "
                         "target-missing is preset-7, not preset-6; auto-zoom is off, not on. Try "
                         "again. If it stays so, the camera does not know that setting."));
    }

    void asksOnlyOnceWhatTheCameraHas()
    {
        start("apply f p");
        m_line->send(Frames::settingsAcknowledgement().toHex());
        m_line->send("FF FF 0A 41 01 06 07 06 09 05 16 00 83");
        QCOMPARE(outcome(), QString("failed: answer-short"));
    }

    void setsSomeAndKeepsTheOthers()
    {
        start("set auto-tracking=pan zoom-offset=custom p");
        QCOMPARE(m_line->written(), Hex::hello());
        m_line->send(Hex::helloReply());
        QCOMPARE(m_line->written(),
                 QByteArray("FF FF 0F 41 01 06 07 06 09 01 55 00 02 01 00 01 03 CA"));
    }

    void findsDifferences()
    {
        m_order.settings = {1, 1, false, 1, 1};
        start("diff f p");
        m_line->send(Hex::helloReply());
        QCOMPARE(outcome(), QString("done"));

        m_order.settings = {1, 1, false, 0, 1};
        start("diff f p");
        m_line->send(Hex::helloReply());
        QCOMPARE(outcome(), QString("failed: differs"));
        QCOMPARE(advice(),
                 QString("The camera's auto-zoom is on, not off. \"corvanectl apply\" gives it the "
                         "settings of the file."));
        QCOMPARE(m_line->written(), Hex::hello());
    }

    void savesOnlyWhatHasWords()
    {
        start("save p f");
        m_line->send(Hex::helloReply());
        QCOMPARE(outcome(), QString("done"));

        // Target missing is 0C.
        start("save p f");
        m_line->send(
            "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 06 0C 00 00 00 00 01 01 01 01 A7");
        QCOMPARE(outcome(), QString("failed: no-word"));
        QCOMPARE(advice(),
                 QString("The camera reports a setting that a file has no word for: target-missing "
                         "is unknown (12). Set it with \"corvanectl set\" first."));
        QCOMPARE(m_line->written(), Hex::hello());
    }

    void setsZoomPresets_data()
    {
        addRows<QString, QByteArray>(
            {"line", "request"},
            {{"first", "zoom 1 p", Hex::zoom1()}, {"second", "zoom 2 p", Hex::zoom2()}});
    }

    void setsZoomPresets()
    {
        QFETCH(QString, line);
        start(line);
        QTEST(m_line->written(), "request");
        m_line->send(Hex::zoomReply());
        QCOMPARE(outcome(), QString("done"));
        QCOMPARE(result().zoom.value_or(0), 100);
    }

    void failsWithoutAcknowledgement_data()
    {
        addRows<QString, int, QString>(
            {"line", "limit", "advice"},
            {{"settings", "apply f p", 5000,
              "The camera has not acknowledged the settings within 5 s. Is the camera on, and is "
              "this its port? \"corvane-diagnose p\" finds out more."},
             {"zoom", "zoom 1 p", 2000,
              "The camera has not acknowledged the zoom preset within 2 s. Is the camera on, and "
              "is this its port? \"corvane-diagnose p\" finds out more."}});
    }

    void failsWithoutAcknowledgement()
    {
        QFETCH(QString, line);
        QFETCH(int, limit);
        start(line);
        m_line->pass(limit - 1);
        QVERIFY(!m_job->hasEnded());
        m_line->pass(1);
        QCOMPARE(outcome(), QString("failed: not-acknowledged"));
        QTEST(advice(), "advice");
    }

    void failsWhenTheLineIsLost_data()
    {
        addRows<QString, bool>({"line", "isCamera"},
                               {{"while it is open whether there is one", "zoom 1 --all", false},
                                {"afterwards", "zoom 1 p", true}});
    }

    void failsWhenTheLineIsLost()
    {
        QFETCH(QString, line);
        start(line);
        emit m_line->lost("No such device");
        QCOMPARE(outcome(), QString("failed: hung-up"));
        QVERIFY(result().reason.sentence.contains("No such device"));
        QTEST(m_job->isCamera(), "isCamera");
    }

    void upgrades()
    {
        startUpgrade("upgrade i p", "1.0.0.7");
        QCOMPARE(m_line->written(), Hex::smallAnnouncement());
        QVERIFY(m_job->isUploading());
        m_line->send(Hex::announcementReply());
        QCOMPARE(m_line->written(), Hex::smallPacket());
        m_line->send(Hex::packetReply());
        QVERIFY(!m_job->isUploading());
        m_line->pass(1000);
        m_line->send(Hex::raisedHelloReply());
        QCOMPARE(outcome(), QString("done"));
        QCOMPARE(result().version, QString("1.0.0.6"));
        QCOMPARE(result().versionAfter, QString("1.0.0.7"));
        QCOMPARE(result().imageVersion, QString("1.0.0.7"));
        QCOMPARE(result().attempts, 1);
        QCOMPARE(m_steps,
                 (QStringList{"announcing 1, 0 of 1", "uploading 1, 0 of 1", "progressed",
                              "rebooting 1, 1 of 1", "ended"}));
    }

    void startsAFailedUploadAgain()
    {
        startUpgrade("upgrade i p", "1.0.0.7", "\1\2\3", 2);
        m_line->pass(5000);
        QCOMPARE(outcome(), QString("has not ended"));
        m_line->pass(3000);
        m_line->pass(5000);
        QCOMPARE(outcome(), QString("failed: not-announced"));
        QCOMPARE(result().attempts, 2);
        QCOMPARE(m_steps,
                 (QStringList{"announcing 1, 0 of 1", "pausing 1, 0 of 1", "announcing 2, 0 of 1",
                              "ended"}));
    }

    void makesNoMoreAttemptsWhenAsked()
    {
        start("info p");
        m_job->makeNoMoreAttempts();
        QCOMPARE(outcome(), QString("has not ended"));

        startUpgrade("upgrade i p", "1.0.0.7", "\1\2\3", 2);
        m_job->makeNoMoreAttempts();
        m_line->pass(5000);
        QCOMPARE(outcome(), QString("failed: not-announced"));
    }

    void saysWhereItIs()
    {
        start("info p");
        QCOMPARE(step(), QString("asking 1, 0 of 0"));
        QCOMPARE(m_job->status().port, QString("p"));
    }

    void upgradesOnlyToANewerVersion_data()
    {
        // Of version 1.0.0.7f.
        const QByteArray other =
            "FF FF 17 41 01 06 07 06 09 05 16 00 01 00 00 7F 01 00 00 00 00 01 01 01 01 15";
        addRows<QByteArray, QString, bool>(
            {"camera", "image", "isNewer"},
            {{"the same", Hex::helloReply(), "1.0.0.6", false},
             {"older", Hex::helloReply(), "1.0.0.5", false},
             {"older at the front", Hex::helloReply(), "0.9.9.9", false},
             {"newer", Hex::helloReply(), "1.0.0.7", true},
             {"newer at the front", Hex::helloReply(), "2.0.0.0", true},
             {"hexadecimal", Hex::helloReply(), "1.0.0.f", true},
             {"a part of FF, which is shown as -1", Hex::helloReply(), "1.0.0.-1", true},
             {"a part of 80, which is shown as -80", other, "1.0.0.-80", true}});
    }

    void upgradesOnlyToANewerVersion()
    {
        QFETCH(QByteArray, camera);
        QFETCH(QString, image);
        startUpgrade("upgrade i p --newer-only", image, "\1\2\3", 1, camera);
        QTEST(m_job->isUploading(), "isNewer");
        QTEST(outcome() != "skipped: not-newer", "isNewer");
        if (m_job->hasEnded()) {
            QCOMPARE(advice(),
                     QString("The camera runs version 1.0.0.6, and the image has %1.").arg(image));
        }
    }

    void changesNothingInADryRun_data()
    {
        addRows<QString, QString>(
            {"line", "wouldSend"},
            {{"apply", "apply f p --dry-run",
              "CUSTOM_SETTING 02 09 01 00 03 (auto-tracking=pan target-missing=preset-7 "
              "direction=upside-down auto-zoom=off zoom-offset=custom)"},
             {"set", "set auto-zoom=off p --dry-run",
              "CUSTOM_SETTING 01 01 00 00 01 (auto-tracking=auto target-missing=home "
              "direction=upright auto-zoom=off zoom-offset=1)"},
             {"zoom", "zoom 2 p --dry-run", "SET_CUSTOM_ZOOM 01 00 (zoom 2)"},
             {"upgrade", "upgrade i p --dry-run",
              "RECEIVE_FW_INFO 02 00 01 2C (300 bytes); UPLOAD_FIRMWARE, 3 packets"}});
    }

    void changesNothingInADryRun()
    {
        m_order.settings = {2, 9, true, 0, 3};
        m_order.upgrade.firmware = Hex::firmware();
        QFETCH(QString, line);
        start(line);
        m_line->send(Hex::helloReply());
        QCOMPARE(outcome(), QString("done"));
        QTEST(result().wouldSend.join("; "), "wouldSend");
        const QByteArray written = m_line->written();
        QVERIFY(written.isEmpty() || written == Hex::hello());
    }

    void canBeAbandoned_data()
    {
        addRows<int, QString>(
            {"replies", "advice"},
            {{"while asking", 0, "Ended before it was done. Run the command again."},
             {"while uploading", 2,
              "The upload was abandoned after 0 of 1 packets. The camera has an incomplete "
              "firmware: leave it on, and upgrade it again."},
             {"while rebooting", 3,
              "The camera has all packets, but has not been seen to run the new version. See with "
              "\"corvanectl info\" which version it runs."}});
    }

    void canBeAbandoned()
    {
        m_order.upgrade.firmware = QByteArray("\1\2\3");
        start("upgrade i p");
        QFETCH(int, replies);
        const QVector<QByteArray> all{Hex::helloReply(), Hex::announcementReply(),
                                      Hex::packetReply(), Hex::raisedHelloReply()};
        for (int i = 0; i < replies; ++i) {
            m_line->send(all.at(i));
        }
        m_job->abandon();
        QCOMPARE(outcome(), QString("failed: abandoned"));
        QTEST(advice(), "advice");
        QVERIFY(!m_line->hasAlarm());
        // Whatever happens afterwards.
        emit m_line->lost("No such device");
        m_line->send(all.at(replies));
        m_job->makeNoMoreAttempts();
        m_job->abandon();
        QTEST(advice(), "advice");
        QCOMPARE(m_steps.last(), QString("ended"));
    }

    // The times are real, so that they are compared with what passes here.
    void measuresTheUpload()
    {
        const auto elapsed = [](const QElapsedTimer &clock) {
            return static_cast<double>(clock.elapsed());
        };
        startUpgrade("upgrade i p", "1.0.0.7", Hex::firmware());
        QElapsedTimer before;
        before.start();
        m_line->send(Hex::announcementReply());
        QCOMPARE(m_job->status().packetsPerSecond, 0.0);
        QElapsedTimer after;
        after.start();
        m_line->send(Hex::packetReply());
        QTRY_VERIFY(after.hasExpired(100));
        const double least = elapsed(after);
        const double rate = m_job->status().packetsPerSecond;
        // One packet; the clocks may be a millisecond apart.
        QVERIFY2(rate <= 1000 / (least - 1), qPrintable(QString::number(rate)));
        QVERIFY2(rate >= 1000 / (elapsed(before) + 1), qPrintable(QString::number(rate)));
        // The time is known as soon as the upload is over.
        connect(m_job.get(), &CameraJob::stateChanged, m_job.get(), [this] { m_job->abandon(); });
        m_line->send(Hex::packetReply());
        m_line->send(Hex::packetReply());
        QCOMPARE(m_steps.at(m_steps.size() - 2), QString("rebooting 1, 3 of 3"));
        QCOMPARE(m_job->status().packetsPerSecond, 0.0);
        const auto time = static_cast<double>(result().uploadTime->count());
        QVERIFY2(time >= least - 1 && time <= elapsed(before) + 1,
                 qPrintable(QString::number(time)));
    }

private:
    void start(const QString &line)
    {
        const auto command = parseControlCommandLine(("corvanectl " + line).split(' '));
        m_order.command = std::get<ControlCommand>(command);
        PortFinding finding;
        finding.port = "p";
        m_job.reset();
        m_line = std::make_unique<FakeLine>();
        m_job = std::make_unique<CameraJob>(*m_line, m_order, finding);
        m_steps.clear();
        connect(m_job.get(), &CameraJob::stateChanged, this, [this] { m_steps += step(); });
        connect(m_job.get(), &CameraJob::progressed, this, [this] { m_steps += "progressed"; });
        connect(m_job.get(), &CameraJob::ended, this, [this] {
            m_steps += "ended";
            m_result = m_job->result();
        });
        m_job->start();
    }

    void startUpgrade(const QString &line, const QString &imageVersion,
                      const QByteArray &firmware = "\1\2\3", int attempts = 1,
                      const QByteArray &camera = Hex::helloReply())
    {
        m_order.upgrade = {firmware, imageVersion, attempts};
        start(line);
        m_line->written();
        m_line->send(camera);
    }

    QString step() const
    {
        const CameraStatus status = m_job->status();
        return QString("%1 %2, %3 of %4")
            .arg(stateName(status.state))
            .arg(status.attempt)
            .arg(status.packets)
            .arg(status.packetCount);
    }

    /// As it was when the job ended.
    const CameraResult &result() const { return m_result; }

    QString outcome() const
    {
        if (!m_job->hasEnded()) {
            return "has not ended";
        }
        const QString state = stateName(m_job->status().state);
        static const QStringList kOutcomes{"done", "skipped", "failed"};
        const QString &outcome = kOutcomes.at(static_cast<int>(m_result.outcome));
        if (state != outcome || m_result.port != "p") {
            return QString("%1 of %2, but %3").arg(outcome, m_result.port, state);
        }
        return m_result.reason.id.isEmpty() ? outcome : outcome + ": " + m_result.reason.id;
    }

    /// Why it has not done what it was to do, and what helps.
    QString advice() const
    {
        return QString("%1 %2").arg(m_result.reason.sentence, m_result.reason.remedy).trimmed();
    }

    /// A report with pan tracking, preset 7, upside down, no automatic zoom, custom offset.
    static QByteArray panning(const QByteArray &command, const QByteArray &sum)
    {
        return "FF FF 17 41 01 06 07 06 09 05 " + command
            + " 00 01 00 00 06 09 00 00 01 01 01 00 00 03 " + sum;
    }

    CameraOrder m_order;
    std::unique_ptr<FakeLine> m_line;
    std::unique_ptr<CameraJob> m_job;
    CameraResult m_result;
    QStringList m_steps; ///< that the job has said
};

QTEST_GUILESS_MAIN(CameraJobTest)

#include "tst_camerajob.moc"
