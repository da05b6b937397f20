// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "patience.h"
#include "windowfixture.h"

#include <QFileDialog>
#include <QLineEdit>
#include <QTabWidget>

namespace {

QByteArray validFile()
{
    return "KVEL" + QByteArray::fromHex("01020aff 05060708");
}

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
    void checksTheTypedFile_data();
    void checksTheTypedFile();
    void aValidFileBehindAnInvalidOneReplacesTheError();
    void anInvalidFileBehindAValidOneReplacesTheVersions();
    void leavingTheFieldChecksToo();
    void choosingAFileChecksIt();
    void cancellingTheDialogChangesNothing();
};

void MainWindowFirmwareFileTest::checksTheTypedFile_data()
{
    QTest::addColumn<QByteArray>("contents");
    QTest::addColumn<QString>("pane");
    QTest::addColumn<bool>("canStart");

    const QString error = QStringLiteral("Firmware file error.");
    QTest::newRow("a valid file") << validFile()
                                  << "Protocol version: 1.2.a.-1\nImage version: 5.6.7.8" << true;
    QTest::newRow("the magic alone")
        << QByteArray("KVEL") << "Protocol version: 0.0.0.0\nImage version: 0.0.0.0" << true;
    QTest::newRow("a wrong magic") << QByteArray("KVEM0000") << error << false;
    QTest::newRow("the magic in lower case") << QByteArray("kvel0000") << error << false;
    QTest::newRow("three bytes") << QByteArray("KVE") << error << false;
    QTest::newRow("an empty file") << QByteArray("") << error << false;
    QTest::newRow("no such file") << QByteArray() << "" << false;
}

void MainWindowFirmwareFileTest::checksTheTypedFile()
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
    QCOMPARE(fixture.widget("pushButton_start_upgrade")->isEnabled(), canStart);
    QCOMPARE(fixture.dialogs.texts(), QStringList());
    QCOMPARE(fixture.log.statusTexts(), QStringList());
}

void MainWindowFirmwareFileTest::aValidFileBehindAnInvalidOneReplacesTheError()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    WindowFixture fixture;
    fixture.child<QLineEdit>("lineEdit_firmware")->setText(file.fileName());
    QMetaObject::invokeMethod(&fixture.window, "on_lineEdit_firmware_editingFinished");
    QCOMPARE(fixture.text("textEdit_firmware_info"), QString("Firmware file error."));
    file.write(validFile());
    file.flush();
    QMetaObject::invokeMethod(&fixture.window, "on_lineEdit_firmware_editingFinished");
    QCOMPARE(fixture.text("textEdit_firmware_info"),
             QString("Protocol version: 1.2.a.-1\nImage version: 5.6.7.8"));
}

void MainWindowFirmwareFileTest::anInvalidFileBehindAValidOneReplacesTheVersions()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write(validFile());
    file.flush();
    WindowFixture fixture;
    fixture.child<QLineEdit>("lineEdit_firmware")->setText(file.fileName());
    QMetaObject::invokeMethod(&fixture.window, "on_lineEdit_firmware_editingFinished");
    fixture.child<QLineEdit>("lineEdit_firmware")->setText("/dev/zero");
    QMetaObject::invokeMethod(&fixture.window, "on_lineEdit_firmware_editingFinished");
    QCOMPARE(fixture.text("textEdit_firmware_info"), QString());
    file.resize(3);
    fixture.child<QLineEdit>("lineEdit_firmware")->setText(file.fileName());
    QMetaObject::invokeMethod(&fixture.window, "on_lineEdit_firmware_editingFinished");
    QCOMPARE(fixture.text("textEdit_firmware_info"), QString("Firmware file error."));
}

void MainWindowFirmwareFileTest::leavingTheFieldChecksToo()
{
    QTemporaryFile file;
    QVERIFY(file.open());
    file.write(validFile());
    file.flush();
    WindowFixture fixture;
    QVERIFY(fixture.connectCamera());
    fixture.window.show();
    fixture.child<QTabWidget>("tabWidget")->setCurrentIndex(1);
    fixture.window.activateWindow();
    auto *const field = fixture.child<QLineEdit>("lineEdit_firmware");
    field->setFocus();
    QTRY_VERIFY(field->hasFocus());
    field->setText(file.fileName());
    QVERIFY(!fixture.widget("pushButton_start_upgrade")->isEnabled());
    QTest::keyClick(field, Qt::Key_Tab);
    QVERIFY(fixture.widget("pushButton_start_upgrade")->isEnabled());
}

void MainWindowFirmwareFileTest::choosingAFileChecksIt()
{
    QTemporaryFile file(QDir::tempPath() + "/XXXXXX.img");
    QVERIFY(file.open());
    file.write(validFile());
    file.flush();
    WindowFixture fixture;
    QVERIFY(fixture.connectCamera());
    const FileDialogAnswer answer(file.fileName());
    fixture.click("pushButton_choose_file");
    QCOMPARE(answer.caption, QString("Open File"));
    QCOMPARE(answer.directory, QString("/"));
    QCOMPARE(answer.filters, QStringList{"firmware files(*.img)"});
    QCOMPARE(fixture.child<QLineEdit>("lineEdit_firmware")->text(), file.fileName());
    QCOMPARE(fixture.text("textEdit_firmware_info"),
             QString("Protocol version: 1.2.a.-1\nImage version: 5.6.7.8"));
    QVERIFY(fixture.widget("pushButton_start_upgrade")->isEnabled());
}

void MainWindowFirmwareFileTest::cancellingTheDialogChangesNothing()
{
    WindowFixture fixture;
    QVERIFY(fixture.connectCamera());
    fixture.child<QLineEdit>("lineEdit_firmware")->setText("/nowhere/at-all.img");
    fixture.child<QTextEdit>("textEdit_firmware_info")->setPlainText("typed by the operator");
    fixture.widget("pushButton_start_upgrade")->setEnabled(true);
    const FileDialogAnswer answer{QString()};
    fixture.click("pushButton_choose_file");
    QCOMPARE(answer.caption, QString("Open File"));
    QCOMPARE(fixture.child<QLineEdit>("lineEdit_firmware")->text(), QString("/nowhere/at-all.img"));
    QCOMPARE(fixture.text("textEdit_firmware_info"), QString("typed by the operator"));
    QVERIFY(fixture.widget("pushButton_start_upgrade")->isEnabled());
}

QTEST_MAIN(MainWindowFirmwareFileTest)
#include "tst_mainwindowfirmwarefile.moc"
