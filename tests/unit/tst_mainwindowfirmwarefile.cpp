// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "rows.h"
#include "windowfixture.h"

#include <QFileDialog>
#include <QTabWidget>

namespace {

/// Has the file dialog answered as soon as it is open, and remembers what it looked like.
class FileDialogAnswer : public QObject {
    Q_OBJECT

public:
    explicit FileDialogAnswer(QString path)
        : m_path(std::move(path))
    {
        connect(&m_poll, &QTimer::timeout, this, &FileDialogAnswer::answer);
        m_poll.start(10);
    }

    QString caption;
    QString directory;
    QStringList filters;
    QFileDialog::Options options;
    const QWidget *parent = nullptr;

private:
    void answer()
    {
        auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (dialog == nullptr) {
            return;
        }
        m_poll.stop();
        caption = dialog->windowTitle();
        directory = dialog->directory().path();
        filters = dialog->nameFilters();
        options = dialog->options();
        parent = dialog->parentWidget();
        if (m_path.isEmpty()) {
            dialog->reject();
            return;
        }
        dialog->findChild<QLineEdit *>("fileNameEdit")->setText(m_path);
        QMetaObject::invokeMethod(dialog, "accept");
    }

    QString m_path;
    QTimer m_poll;
};

} // namespace

class MainWindowFirmwareFileTest : public QObject {
    Q_OBJECT

private slots:
    void checksTheTypedFile_data()
    {
        const QString error = QStringLiteral("Firmware file error.");
        addRows<QByteArray, QString, bool>(
            {"contents", "pane", "canStart"},
            {{"a valid file", ImageFile::versionsAlone(), ImageFile::versions(), true},
             {"the magic alone", "KVEL", "Protocol version: 0.0.0.0\nImage version: 0.0.0.0", true},
             {"a wrong magic", "KVEM0000", error, false},
             {"the magic in lower case", "kvel0000", error, false},
             {"three bytes", "KVE", error, false},
             {"an empty file", "", error, false},
             {"no such file", QByteArray(), "", false}});
    }

    void checksTheTypedFile()
    {
        QFETCH(QByteArray, contents);
        QFETCH(bool, canStart);
        QTemporaryDir directory;
        const QString path = directory.filePath("image");
        if (!contents.isNull()) {
            QFile file(path);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write(contents);
        }
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.window.show();
        fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(1);
        // The opposite of what is expected, so that it has to change.
        fixture.widget("pushButton_start_upgrade")->setEnabled(!canStart);
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("typed by the operator");

        auto *const field = fixture.child<QLineEdit>("lineEdit_firmware");
        field->setText(path);
        QTest::keyClick(field, Qt::Key_Return);
        QTEST(fixture.text("textEdit_firmware_info"), "pane");
        QCOMPARE(fixture.isEnabled("pushButton_start_upgrade"), canStart);
        QCOMPARE(fixture.dialogs.texts(), QStringList());
        QCOMPARE(fixture.log.statusTexts(), QStringList());
    }

    void aValidFileBehindAnInvalidOneReplacesTheError()
    {
        ImageFile file("");
        WindowFixture fixture;
        fixture.enterFirmwarePath(file.fileName());
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString("Firmware file error."));
        file.write(ImageFile::versionsAlone());
        file.flush();
        fixture.call("on_lineEdit_firmware_editingFinished");
        QCOMPARE(fixture.text("textEdit_firmware_info"), ImageFile::versions());
    }

    void anInvalidFileBehindAValidOneReplacesTheVersions()
    {
        ImageFile file;
        WindowFixture fixture;
        fixture.enterFirmwarePath(file.fileName());
        fixture.enterFirmwarePath("/dev/zero");
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString());
        file.resize(3);
        fixture.enterFirmwarePath(file.fileName());
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString("Firmware file error."));
    }

    void leavingTheFieldChecksToo()
    {
        ImageFile file;
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        fixture.window.show();
        fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(1);
        fixture.window.activateWindow();
        auto *const field = fixture.child<QLineEdit>("lineEdit_firmware");
        field->setFocus();
        QTRY_VERIFY(field->hasFocus());
        field->setText(file.fileName());
        QVERIFY(!fixture.isEnabled("pushButton_start_upgrade"));
        QTest::keyClick(field, Qt::Key_Tab);
        QVERIFY(fixture.isEnabled("pushButton_start_upgrade"));
    }

    void choosingAFileChecksIt()
    {
        ImageFile file;
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        const FileDialogAnswer answer(file.fileName());
        fixture.click("pushButton_choose_file");
        QCOMPARE(answer.caption, QString("Open File"));
        QCOMPARE(answer.directory, QString("/"));
        QCOMPARE(answer.filters, QStringList{"firmware files(*.img)"});
        QCOMPARE(answer.options, QFileDialog(&fixture.window).options());
        QCOMPARE(answer.parent, &fixture.window);
        QCOMPARE(fixture.child<QLineEdit>("lineEdit_firmware")->text(), file.fileName());
        QCOMPARE(fixture.text("textEdit_firmware_info"), ImageFile::versions());
        QVERIFY(fixture.isEnabled("pushButton_start_upgrade"));
    }

    void cancellingTheDialogChangesNothing()
    {
        WindowFixture fixture;
        QVERIFY(fixture.connectCamera());
        // In a folder that exists, and where the dialog does not start for that.
        const QString path = QDir::tempPath() + "/nowhere-at-all.img";
        fixture.child<QLineEdit>("lineEdit_firmware")->setText(path);
        fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("typed by the operator");
        fixture.widget("pushButton_start_upgrade")->setEnabled(true);
        const FileDialogAnswer answer{QString()};
        fixture.click("pushButton_choose_file");
        QCOMPARE(answer.caption, QString("Open File"));
        QCOMPARE(answer.directory, QString("/"));
        QCOMPARE(fixture.child<QLineEdit>("lineEdit_firmware")->text(), path);
        QCOMPARE(fixture.text("textEdit_firmware_info"), QString("typed by the operator"));
        QVERIFY(fixture.isEnabled("pushButton_start_upgrade"));
    }
};

QTEST_MAIN(MainWindowFirmwareFileTest)
#include "tst_mainwindowfirmwarefile.moc"
