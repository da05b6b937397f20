// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "ui_mainwindow.h"

#include "patience.h"

#include <QAbstractItemView>
#include <QMap>
#include <QPointer>
#include <QRegularExpression>
#include <QTranslator>

#include <memory>

namespace {

constexpr int kUnlimited = 16777215; // QWidget's own upper limit, in pixels

// What a font of the form sets by itself; the rest comes from the default font.
constexpr uint kSize = QFont::SizeResolved;
constexpr uint kFamilyAndSize = QFont::FamilyResolved | QFont::SizeResolved;
constexpr uint kFamilySizeAndWeight = kFamilyAndSize | QFont::WeightResolved;
constexpr uint kFamilySizeWeightAndStyle = kFamilySizeAndWeight | QFont::StyleResolved;

struct Part {
    const char *name;
    QObject *object;
};

/// All named parts of the form, in the order in which the form builds them.
std::vector<Part> partsInBuildOrder(const Ui_MainWindow &form)
{
    return {
        {"centralWidget", form.centralWidget},
        {"groupBox_serialport", form.groupBox_serialport},
        {"horizontalLayout", form.horizontalLayout},
        {"label_port", form.label_port},
        {"comboBox_portlist", form.comboBox_portlist},
        {"label_baudrate", form.label_baudrate},
        {"comboBox_baudrate", form.comboBox_baudrate},
        {"pushButton_connect", form.pushButton_connect},
        {"pushButton_disconnect", form.pushButton_disconnect},
        {"groupBox_banner", form.groupBox_banner},
        {"horizontalLayout_2", form.horizontalLayout_2},
        {"label_logo_title", form.label_logo_title},
        {"toolButton_about", form.toolButton_about},
        {"toolButton_language", form.toolButton_language},
        {"tabWidget", form.tabWidget},
        {"tab_control", form.tab_control},
        {"gridLayout", form.gridLayout},
        {"groupBox_button", form.groupBox_button},
        {"gridLayout_2", form.gridLayout_2},
        {"pushButton_default", form.pushButton_default},
        {"pushButton_apply", form.pushButton_apply},
        {"groupBox_autozoom", form.groupBox_autozoom},
        {"verticalLayout_2", form.verticalLayout_2},
        {"label_autozoom", form.label_autozoom},
        {"comboBox_autozoom", form.comboBox_autozoom},
        {"groupBox_zoomoffset", form.groupBox_zoomoffset},
        {"verticalLayout_3", form.verticalLayout_3},
        {"label_autozoom_2", form.label_autozoom_2},
        {"comboBox_zoomoffset", form.comboBox_zoomoffset},
        {"groupBox_targetmissing", form.groupBox_targetmissing},
        {"verticalLayout_4", form.verticalLayout_4},
        {"label_targetmissing", form.label_targetmissing},
        {"comboBox_targetmissing", form.comboBox_targetmissing},
        {"groupBox_autotracking", form.groupBox_autotracking},
        {"verticalLayout", form.verticalLayout},
        {"label_autotracking", form.label_autotracking},
        {"comboBox_autotracking", form.comboBox_autotracking},
        {"groupBox_camera_settings", form.groupBox_camera_settings},
        {"verticalLayout_5", form.verticalLayout_5},
        {"label_camera_settings", form.label_camera_settings},
        {"groupBox_Cam_Install", form.groupBox_Cam_Install},
        {"horizontalLayout_3", form.horizontalLayout_3},
        {"radioButton_upright", form.radioButton_upright},
        {"radioButton_upside_down", form.radioButton_upside_down},
        {"textEdit_device_info", form.textEdit_device_info},
        {"groupBox_camera_custom_zoom", form.groupBox_camera_custom_zoom},
        {"verticalLayout_6", form.verticalLayout_6},
        {"label_camera_custom_zoom", form.label_camera_custom_zoom},
        {"groupBox_Cam_Custom_Zoom", form.groupBox_Cam_Custom_Zoom},
        {"horizontalLayout_4", form.horizontalLayout_4},
        {"pushButton_custom_zoom_1", form.pushButton_custom_zoom_1},
        {"pushButton_custom_zoom_2", form.pushButton_custom_zoom_2},
        {"tab_firmware_update", form.tab_firmware_update},
        {"gridLayout_6", form.gridLayout_6},
        {"groupBox", form.groupBox},
        {"gridLayout_8", form.gridLayout_8},
        {"pushButton_start_upgrade", form.pushButton_start_upgrade},
        {"pushButton_cancel_upgrade", form.pushButton_cancel_upgrade},
        {"progressBar_updating", form.progressBar_updating},
        {"groupBox_step1", form.groupBox_step1},
        {"gridLayout_7", form.gridLayout_7},
        {"pushButton_choose_file", form.pushButton_choose_file},
        {"lineEdit_firmware", form.lineEdit_firmware},
        {"textEdit_firmware_info", form.textEdit_firmware_info},
        {"statusBar", form.statusBar},
    };
}

struct Text {
    const char *object;
    const char *property;
    const char *text;
};

/// The texts that are properties of a widget; combo box items and tab titles stand apart.
std::vector<Text> texts()
{
    return {
        {"MainWindow", "windowTitle", "Corvane"},
        {"label_port", "text", "Port :"},
        {"label_baudrate", "text", "Baudrate:"},
        {"pushButton_connect", "text", "Connect"},
        {"pushButton_disconnect", "text", "Disconnect"},
        {"label_logo_title", "text", "Corvane"},
        {"toolButton_about", "text", "About"},
        {"toolButton_language", "text", "Language"},
        {"pushButton_default", "text", "Default"},
        {"pushButton_apply", "text", "Apply"},
        {"label_autozoom", "text", "Auto Zoom :"},
        {"label_autozoom_2", "text", "Zoom Offset:"},
        {"label_targetmissing", "text", "Target Missing Compensation :"},
        {"label_autotracking", "text", "Auto Tracking :"},
        {"label_camera_settings", "text", "Camera Installed direction :"},
        {"radioButton_upright", "text", "Upright"},
        {"radioButton_upside_down", "text", "Upside down"},
        {"label_camera_custom_zoom", "text", "Camera Custom Zoom :"},
        {"pushButton_custom_zoom_1", "text", "Zoom 1"},
        {"pushButton_custom_zoom_2", "text", "Zoom 2"},
        {"groupBox", "title", "Step 2:"},
        {"pushButton_start_upgrade", "text", "Upgrade"},
        {"pushButton_cancel_upgrade", "text", "Cancel"},
        {"groupBox_step1", "title", "Step 1:"},
        {"pushButton_choose_file", "text", "Choose file"},
    };
}

/// The names in a list separated by blanks.
std::vector<QByteArray> words(const char *list)
{
    const QList<QByteArray> names = QByteArray(list).split(' ');
    return {names.begin(), names.end()};
}

/// Stands in for a language: wraps each text in brackets, notes what it was asked for.
class RecordingTranslator : public QTranslator {
public:
    RecordingTranslator() { QCoreApplication::installTranslator(this); }
    ~RecordingTranslator() override { QCoreApplication::removeTranslator(this); }
    Q_DISABLE_COPY_MOVE(RecordingTranslator)

    bool isEmpty() const override { return false; }

    QString translate(const char *context, const char *sourceText, const char *disambiguation,
                      int n) const override
    {
        m_texts.append(QString::fromUtf8(sourceText));
        m_contexts.insert(QString::fromUtf8(context));
        m_plain = m_plain && disambiguation == nullptr && n == -1;
        return QStringLiteral("[%1]").arg(QString::fromUtf8(sourceText));
    }

    void forget()
    {
        m_texts.clear();
        m_contexts.clear();
        m_plain = true;
    }

    QStringList texts() const { return m_texts; }
    QSet<QString> contexts() const { return m_contexts; }
    /// Whether each text came without disambiguation and without a number.
    bool plain() const { return m_plain; }

private:
    // translate() is const in Qt's interface.
    mutable QStringList m_texts;
    mutable QSet<QString> m_contexts;
    mutable bool m_plain = true;
};

/// Notes every object in the order of its first appearance as a parent or as a child.
class BuildRecorder : public QObject {
public:
    BuildRecorder() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            // A tab page has no parent until its tab is added, but is a parent long before.
            note(watched);
            note(static_cast<QChildEvent *>(event)->child());
        }
        return false;
    }

    QVector<QPointer<QObject>> objects() const { return m_objects; }

private:
    void note(QObject *object)
    {
        if (!m_objects.contains(object)) {
            m_objects.append(object);
        }
    }

    QVector<QPointer<QObject>> m_objects;
};

/// Notes the minimum size that each widget has before its style sheet takes hold. Style sheets do
/// so as soon as a tab page is added, and replace the minimum width by their min-width.
class MinimumSizeRecorder : public QObject {
public:
    MinimumSizeRecorder() { QCoreApplication::instance()->installEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        // Qt marks the widget with this property just before it sets the min-width.
        if (event->type() == QEvent::DynamicPropertyChange
            && static_cast<QDynamicPropertyChangeEvent *>(event)->propertyName()
                == "_q_stylesheet_minw"
            && !m_sizes.contains(watched)) {
            m_sizes.insert(watched, static_cast<QWidget *>(watched)->minimumSize());
        }
        return false;
    }

    QSize minimumSize(QWidget *widget) const
    {
        return m_sizes.value(widget, widget->minimumSize());
    }

private:
    QHash<QObject *, QSize> m_sizes;
};

/// A window with slots that the form binds by name, as the real window has.
class SlotCountingWindow : public QMainWindow {
    Q_OBJECT

public:
    int applyClicks() const { return m_applyClicks; }
    int autoTrackingChanges() const { return m_autoTrackingChanges; }
    int tabChanges() const { return m_tabChanges; }

private slots:
    void on_pushButton_apply_clicked() { ++m_applyClicks; }
    void on_comboBox_autotracking_currentIndexChanged(int) { ++m_autoTrackingChanges; }
    void on_tabWidget_currentChanged(int) { ++m_tabChanges; }

private:
    int m_applyClicks = 0;
    int m_autoTrackingChanges = 0;
    int m_tabChanges = 0;
};

using Declarations = QMap<QString, QString>;
using Rules = QMap<QString, Declarations>;

/// One spelling for values that differ only in white space.
QString normalized(const QString &text)
{
    static const QRegularExpression aroundPunctuation(QStringLiteral("\\s*([,:()])\\s*"));
    return text.simplified().replace(aroundPunctuation, QStringLiteral("\\1"));
}

/// "a: 1; b: 2" as a map from property to value.
Declarations declarationsOf(const QString &body)
{
    Declarations declarations;
    const QStringList parts = body.split(QLatin1Char(';'));
    for (const QString &declaration : parts) {
        if (declaration.trimmed().isEmpty()) {
            continue;
        }
        const int colon = declaration.indexOf(QLatin1Char(':'));
        declarations.insert(declaration.left(colon).trimmed(),
                            normalized(declaration.mid(colon + 1)));
    }
    return declarations;
}

/// A style sheet as a map from selector to declarations; a selector list counts for each of its
/// selectors.
Rules rulesOf(const QString &styleSheet)
{
    static const QRegularExpression rule(QStringLiteral("([^{}]+)\\{([^{}]*)\\}"));
    Rules rules;
    for (auto matches = rule.globalMatch(styleSheet); matches.hasNext();) {
        const auto match = matches.next();
        const QStringList selectors = match.captured(1).split(QLatin1Char(','));
        for (const QString &selector : selectors) {
            Declarations &declarations = rules[selector.trimmed()];
            const Declarations added = declarationsOf(match.captured(2));
            for (auto it = added.cbegin(); it != added.cend(); ++it) {
                declarations.insert(it.key(), it.value());
            }
        }
    }
    return rules;
}

/// Whether each channel of the two colours differs by no more than a gradient changes in a
/// few rows of pixels.
bool isNear(const QColor &actual, const QColor &expected)
{
    constexpr int kTolerance = 16;
    return qAbs(actual.red() - expected.red()) <= kTolerance
        && qAbs(actual.green() - expected.green()) <= kTolerance
        && qAbs(actual.blue() - expected.blue()) <= kTolerance;
}

QStringList &warnings()
{
    static QStringList texts;
    return texts;
}

void collectWarnings(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type != QtDebugMsg && type != QtInfoMsg) {
        warnings().append(message);
    }
}

} // namespace

/// Checks the form alone, set up on a plain window: what it builds, in which order, how it looks.
class TestMainWindowForm : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void buildsItsPartsInOrder();
    void givesEveryWidgetItsNameClassAndParent_data();
    void givesEveryWidgetItsNameClassAndParent();
    void holdsNoOtherNamedPart();
    void installsItsCentralWidgetAndStatusBar();
    void placesTheThreeAreasAtFixedGeometries_data();
    void placesTheThreeAreasAtFixedGeometries();

    void showsItsTexts_data();
    void showsItsTexts();
    void fillsTheComboBoxesInOrder_data();
    void fillsTheComboBoxesInOrder();
    void opensOnTheCameraTab() const;

    void setsFonts_data();
    void setsFonts();
    void leavesOtherFontsAlone_data();
    void leavesOtherFontsAlone();
    void setsMinimumAndMaximumSizes_data();
    void setsMinimumAndMaximumSizes();
    void setsSizePolicies_data();
    void setsSizePolicies();
    void setsIconSizes_data();
    void setsIconSizes();

    void setsShortStyleSheetsToTheLetter_data();
    void setsShortStyleSheetsToTheLetter();
    void writesEachRuleOfTheLongStyleSheets_data();
    void writesEachRuleOfTheLongStyleSheets();
    void writesNoOtherRulesInTheLongStyleSheets_data();
    void writesNoOtherRulesInTheLongStyleSheets();
    void sharesStyleSheetsBetweenLikeWidgets_data();
    void sharesStyleSheetsBetweenLikeWidgets();
    void namesOnlyTheseImagesInStyleSheets();
    void carriesEveryImage_data();
    void carriesEveryImage();

    void setsLayoutSpacingAndMargins_data();
    void setsLayoutSpacingAndMargins();
    void linesUpTheItemsOfBoxLayouts_data();
    void linesUpTheItemsOfBoxLayouts();
    void putsTheItemsOfGridLayoutsIntoCells_data();
    void putsTheItemsOfGridLayoutsIntoCells();
    void keepsGapsAndStretchesApart_data();
    void keepsGapsAndStretchesApart();

    void startsWithControlsEnabledOrDisabled_data();
    void startsWithControlsEnabledOrDisabled();
    void makesSomeButtonsFlat_data();
    void makesSomeButtonsFlat();
    void startsWithUprightCheckedAndExclusive() const;
    void putsToolButtonTextUnderTheIcon() const;
    void letsTheOperatorTypeIntoTheTextPanes() const;
    void startsWithAnEmptyProgressBar() const;

    void retranslatesEveryTextInTreeOrder();
    void keepsTheNameThatAWindowHas();
    void namesAnUnnamedWindow();
    void bindsSlotsByNameAfterEverythingElse();

    void drawsNoTextOnTheProgressBar_data();
    void drawsNoTextOnTheProgressBar();
    void hidesTheTextOfDisabledSettingsComboBoxesOnly_data();
    void hidesTheTextOfDisabledSettingsComboBoxesOnly();
    void paintsPushButtonsByTheirState_data();
    void paintsPushButtonsByTheirState();
    void paintsComboBoxesByTheirState_data();
    void paintsComboBoxesByTheirState();
    void paintsAnOpenComboBoxGrey();
    void setsUpAndPaintsWithoutAWarning();

private:
    QWidget *widget(const QString &name) const;
    QLayout *layout(const QString &name) const;
    QImage image(QWidget *widget) const;

    std::unique_ptr<QMainWindow> m_window;
    Ui_MainWindow m_form{};
};

void TestMainWindowForm::init()
{
    m_window = std::make_unique<QMainWindow>();
    m_form.setupUi(m_window.get());
}

void TestMainWindowForm::cleanup()
{
    m_window.reset();
}

QWidget *TestMainWindowForm::widget(const QString &name) const
{
    return m_window->objectName() == name ? m_window.get() : m_window->findChild<QWidget *>(name);
}

QLayout *TestMainWindowForm::layout(const QString &name) const
{
    return m_window->findChild<QLayout *>(name);
}

QImage TestMainWindowForm::image(QWidget *widget) const
{
    // Lays out and polishes the whole window first, so that the widget has its final size.
    m_window->grab();
    return widget->grab().toImage();
}

void TestMainWindowForm::buildsItsPartsInOrder()
{
    QMainWindow window;
    Ui_MainWindow form{};
    QVector<QPointer<QObject>> built;
    {
        BuildRecorder recorder;
        form.setupUi(&window);
        built = recorder.objects();
    }

    QStringList expected;
    QHash<const QObject *, QString> names;
    for (const Part &part : partsInBuildOrder(form)) {
        expected.append(QLatin1String(part.name));
        names.insert(part.object, QLatin1String(part.name));
    }
    QStringList actual;
    for (const QPointer<QObject> &object : qAsConst(built)) {
        if (names.contains(object)) {
            actual.append(names.value(object));
        }
    }
    QCOMPARE(actual, expected);
}

void TestMainWindowForm::givesEveryWidgetItsNameClassAndParent_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("parent");

    struct Row {
        const char *name;
        const char *className;
        const char *parent;
    };
    const QVector<Row> rows{
        {"centralWidget", "QWidget", "MainWindow"},
        {"statusBar", "QStatusBar", "MainWindow"},
        {"groupBox_banner", "QGroupBox", "centralWidget"},
        {"label_logo_title", "QLabel", "groupBox_banner"},
        {"toolButton_about", "QToolButton", "groupBox_banner"},
        {"toolButton_language", "QToolButton", "groupBox_banner"},
        {"groupBox_serialport", "QGroupBox", "centralWidget"},
        {"label_port", "QLabel", "groupBox_serialport"},
        {"comboBox_portlist", "SerialPortComboBox", "groupBox_serialport"},
        {"label_baudrate", "QLabel", "groupBox_serialport"},
        {"comboBox_baudrate", "QComboBox", "groupBox_serialport"},
        {"pushButton_connect", "QPushButton", "groupBox_serialport"},
        {"pushButton_disconnect", "QPushButton", "groupBox_serialport"},
        {"tabWidget", "QTabWidget", "centralWidget"},
        {"tab_control", "QWidget", "tabWidget"},
        {"groupBox_autotracking", "QGroupBox", "tab_control"},
        {"label_autotracking", "QLabel", "groupBox_autotracking"},
        {"comboBox_autotracking", "QComboBox", "groupBox_autotracking"},
        {"groupBox_autozoom", "QGroupBox", "tab_control"},
        {"label_autozoom", "QLabel", "groupBox_autozoom"},
        {"comboBox_autozoom", "QComboBox", "groupBox_autozoom"},
        {"groupBox_targetmissing", "QGroupBox", "tab_control"},
        {"label_targetmissing", "QLabel", "groupBox_targetmissing"},
        {"comboBox_targetmissing", "QComboBox", "groupBox_targetmissing"},
        {"groupBox_zoomoffset", "QGroupBox", "tab_control"},
        {"label_autozoom_2", "QLabel", "groupBox_zoomoffset"},
        {"comboBox_zoomoffset", "QComboBox", "groupBox_zoomoffset"},
        {"groupBox_camera_settings", "QGroupBox", "tab_control"},
        {"label_camera_settings", "QLabel", "groupBox_camera_settings"},
        {"groupBox_Cam_Install", "QGroupBox", "groupBox_camera_settings"},
        {"radioButton_upright", "QRadioButton", "groupBox_Cam_Install"},
        {"radioButton_upside_down", "QRadioButton", "groupBox_Cam_Install"},
        {"groupBox_camera_custom_zoom", "QGroupBox", "tab_control"},
        {"label_camera_custom_zoom", "QLabel", "groupBox_camera_custom_zoom"},
        {"groupBox_Cam_Custom_Zoom", "QGroupBox", "groupBox_camera_custom_zoom"},
        {"pushButton_custom_zoom_1", "QPushButton", "groupBox_Cam_Custom_Zoom"},
        {"pushButton_custom_zoom_2", "QPushButton", "groupBox_Cam_Custom_Zoom"},
        {"textEdit_device_info", "QTextEdit", "tab_control"},
        {"groupBox_button", "QGroupBox", "tab_control"},
        {"pushButton_default", "QPushButton", "groupBox_button"},
        {"pushButton_apply", "QPushButton", "groupBox_button"},
        {"tab_firmware_update", "QWidget", "tabWidget"},
        {"groupBox_step1", "QGroupBox", "tab_firmware_update"},
        {"pushButton_choose_file", "QPushButton", "groupBox_step1"},
        {"lineEdit_firmware", "QLineEdit", "groupBox_step1"},
        {"groupBox", "QGroupBox", "tab_firmware_update"},
        {"pushButton_start_upgrade", "QPushButton", "groupBox"},
        {"pushButton_cancel_upgrade", "QPushButton", "groupBox"},
        {"progressBar_updating", "QProgressBar", "groupBox"},
        {"textEdit_firmware_info", "QTextEdit", "tab_firmware_update"},
    };
    for (const Row &row : rows) {
        QTest::newRow(row.name) << QString::fromLatin1(row.className)
                                << QString::fromLatin1(row.parent);
    }
}

void TestMainWindowForm::givesEveryWidgetItsNameClassAndParent()
{
    QFETCH(QString, className);
    QFETCH(QString, parent);
    const QString name = QString::fromLatin1(QTest::currentDataTag());

    QCOMPARE(m_window->findChildren<QWidget *>(name).size(), 1);
    QWidget *found = widget(name);
    QCOMPARE(QString::fromLatin1(found->metaObject()->className()), className);

    const auto parts = partsInBuildOrder(m_form);
    const auto part = std::find_if(parts.cbegin(), parts.cend(), [&](const Part &candidate) {
        return name == QLatin1String(candidate.name);
    });
    QVERIFY(part != parts.cend());
    QCOMPARE(part->object, found);

    // A tab page stands in a stack of the tab widget's own.
    QWidget *ancestor = found->parentWidget();
    while (ancestor && ancestor->objectName().startsWith(QLatin1String("qt_"))) {
        ancestor = ancestor->parentWidget();
    }
    QVERIFY(ancestor);
    QCOMPARE(ancestor->objectName(), parent);
}

void TestMainWindowForm::holdsNoOtherNamedPart()
{
    QSet<QString> known;
    for (const Part &part : partsInBuildOrder(m_form)) {
        QCOMPARE(part.object->objectName(), QLatin1String(part.name));
        known.insert(QLatin1String(part.name));
    }
    QCOMPARE(known.size(), 65);

    const QSet<QString> ofTheTabBar{QStringLiteral("ScrollLeftButton"),
                                    QStringLiteral("ScrollRightButton")};
    QStringList unknown;
    const auto objects = m_window->findChildren<QObject *>();
    for (const QObject *object : objects) {
        const QString name = object->objectName();
        const bool ofTheForm = (object->isWidgetType() || qobject_cast<const QLayout *>(object))
            && !name.isEmpty() && !name.startsWith(QLatin1String("qt_"))
            && !name.startsWith(QLatin1String("_")) && !ofTheTabBar.contains(name);
        if (ofTheForm && !known.contains(name)) {
            unknown.append(name);
        }
    }
    QCOMPARE(unknown, QStringList());
}

void TestMainWindowForm::installsItsCentralWidgetAndStatusBar()
{
    QCOMPARE(m_window->centralWidget(), m_form.centralWidget);
    QVERIFY(!m_form.centralWidget->layout());
    // statusBar() would make one if there were none.
    QCOMPARE(m_window->findChildren<QStatusBar *>().size(), 1);
    QCOMPARE(m_window->statusBar(), m_form.statusBar);
}

void TestMainWindowForm::placesTheThreeAreasAtFixedGeometries_data()
{
    QTest::addColumn<QRect>("geometry");

    QTest::newRow("MainWindow") << QRect(0, 0, 1000, 700);
    QTest::newRow("groupBox_banner") << QRect(0, 0, 1000, 100);
    QTest::newRow("groupBox_serialport") << QRect(20, 100, 960, 80);
    QTest::newRow("tabWidget") << QRect(20, 180, 960, 500);
}

void TestMainWindowForm::placesTheThreeAreasAtFixedGeometries()
{
    QFETCH(QRect, geometry);

    QCOMPARE(widget(QString::fromLatin1(QTest::currentDataTag()))->geometry(), geometry);
    // The sizes outlive the first layout, too.
    m_window->grab();
    QCOMPARE(widget(QString::fromLatin1(QTest::currentDataTag()))->geometry(), geometry);
}

void TestMainWindowForm::showsItsTexts_data()
{
    QTest::addColumn<QString>("property");
    QTest::addColumn<QString>("text");

    for (const Text &text : texts()) {
        QTest::newRow(text.object)
            << QString::fromLatin1(text.property) << QString::fromLatin1(text.text);
    }
    for (const QByteArray &name :
         words("groupBox_banner groupBox_serialport groupBox_autotracking "
               "groupBox_autozoom groupBox_targetmissing groupBox_zoomoffset "
               "groupBox_camera_settings groupBox_Cam_Install "
               "groupBox_camera_custom_zoom groupBox_Cam_Custom_Zoom groupBox_button")) {
        QTest::newRow(name.constData()) << "title"
                                        << "";
    }
    QTest::newRow("lineEdit_firmware") << "text"
                                       << "";
    QTest::newRow("textEdit_device_info") << "plainText"
                                          << "";
    QTest::newRow("textEdit_firmware_info") << "plainText"
                                            << "";
    QTest::newRow("progressBar_updating") << "format"
                                          << "";
}

void TestMainWindowForm::showsItsTexts()
{
    QFETCH(QString, property);
    QFETCH(QString, text);

    const QVariant value = widget(QString::fromLatin1(QTest::currentDataTag()))
                               ->property(property.toLatin1().constData());
    QVERIFY(value.isValid());
    QCOMPARE(value.toString(), text);
}

void TestMainWindowForm::fillsTheComboBoxesInOrder_data()
{
    QTest::addColumn<QStringList>("items");
    QTest::addColumn<int>("currentIndex");

    QTest::newRow("comboBox_autotracking")
        << QStringList{"OFF", "Auto Tracking", "Pan Tracking", "Tilt Tracking"} << 0;
    QTest::newRow("comboBox_targetmissing")
        << QStringList{"OFF",      "ON (Home)", "Preset 0", "Preset 1", "Preset 2",
                       "Preset 3", "Preset 4",  "Preset 5", "Preset 6", "Preset 7"}
        << 0;
    QTest::newRow("comboBox_autozoom") << QStringList{"OFF", "ON"} << 0;
    QTest::newRow("comboBox_zoomoffset") << QStringList{"0", "1", "2", "Custom"} << 0;
    QTest::newRow("comboBox_baudrate") << QStringList{} << -1;
}

void TestMainWindowForm::fillsTheComboBoxesInOrder()
{
    QFETCH(QStringList, items);
    QFETCH(int, currentIndex);

    const auto *comboBox =
        qobject_cast<QComboBox *>(widget(QString::fromLatin1(QTest::currentDataTag())));
    QStringList actual;
    for (int index = 0; index < comboBox->count(); ++index) {
        actual.append(comboBox->itemText(index));
    }
    QCOMPARE(actual, items);
    QCOMPARE(comboBox->currentIndex(), currentIndex);
    QVERIFY(!comboBox->isEditable());
}

void TestMainWindowForm::opensOnTheCameraTab() const
{
    QCOMPARE(m_form.tabWidget->count(), 2);
    QCOMPARE(m_form.tabWidget->widget(0), m_form.tab_control);
    QCOMPARE(m_form.tabWidget->widget(1), m_form.tab_firmware_update);
    QCOMPARE(m_form.tabWidget->tabText(0), QStringLiteral("Camera Setting"));
    QCOMPARE(m_form.tabWidget->tabText(1), QStringLiteral("Firmware Update"));
    QCOMPARE(m_form.tabWidget->currentIndex(), 0);
}

void TestMainWindowForm::setsFonts_data()
{
    QTest::addColumn<QString>("family");
    QTest::addColumn<int>("points");
    QTest::addColumn<int>("weight");
    QTest::addColumn<uint>("ownProperties");

    const QString defaultFamily = QApplication::font().family();
    const QString arial = QStringLiteral("Arial");
    const QString arialBlack = QStringLiteral("Arial Black");

    for (const QByteArray &name :
         words("toolButton_about toolButton_language label_port comboBox_portlist "
               "label_baudrate comboBox_baudrate tabWidget label_autotracking "
               "comboBox_autotracking label_autozoom comboBox_autozoom "
               "label_targetmissing comboBox_targetmissing label_autozoom_2 "
               "comboBox_zoomoffset label_camera_settings radioButton_upright "
               "radioButton_upside_down label_camera_custom_zoom textEdit_device_info "
               "groupBox_step1 pushButton_choose_file groupBox pushButton_start_upgrade "
               "pushButton_cancel_upgrade progressBar_updating textEdit_firmware_info")) {
        QTest::newRow(name.constData()) << defaultFamily << 12 << 50 << kSize;
    }
    QTest::newRow("pushButton_disconnect") << arialBlack << 12 << 50 << kFamilyAndSize;
    QTest::newRow("pushButton_default") << arialBlack << 12 << 50 << kFamilyAndSize;
    QTest::newRow("pushButton_apply") << arialBlack << 12 << 50 << kFamilyAndSize;
    QTest::newRow("pushButton_connect") << arialBlack << 12 << 50 << kFamilySizeWeightAndStyle;
    QTest::newRow("label_logo_title") << arialBlack << 26 << 75 << kFamilySizeAndWeight;
    QTest::newRow("pushButton_custom_zoom_1") << arial << 12 << 50 << kFamilyAndSize;
    QTest::newRow("pushButton_custom_zoom_2") << arial << 12 << 50 << kFamilyAndSize;
}

void TestMainWindowForm::setsFonts()
{
    QFETCH(QString, family);
    QFETCH(int, points);
    QFETCH(int, weight);
    QFETCH(uint, ownProperties);

    const QWidget *owner = widget(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(owner->testAttribute(Qt::WA_SetFont));
    const QFont font = owner->font();
    QCOMPARE(font.family(), family);
    QCOMPARE(font.pointSize(), points);
    QCOMPARE(font.weight(), weight);
    QCOMPARE(font.bold(), weight == 75);
    QVERIFY(!font.italic());
    QCOMPARE(font.resolve(), ownProperties);
}

void TestMainWindowForm::leavesOtherFontsAlone_data()
{
    QTest::addColumn<QString>("name");

    for (const QByteArray &name :
         words("MainWindow centralWidget statusBar groupBox_banner groupBox_serialport "
               "tab_control groupBox_autotracking groupBox_autozoom "
               "groupBox_targetmissing groupBox_zoomoffset groupBox_camera_settings "
               "groupBox_Cam_Install groupBox_camera_custom_zoom "
               "groupBox_Cam_Custom_Zoom groupBox_button tab_firmware_update "
               "lineEdit_firmware")) {
        QTest::newRow(name.constData()) << QString::fromLatin1(name);
    }
}

void TestMainWindowForm::leavesOtherFontsAlone()
{
    QFETCH(QString, name);

    QVERIFY(!widget(name)->testAttribute(Qt::WA_SetFont));
}

void TestMainWindowForm::setsMinimumAndMaximumSizes_data()
{
    QTest::addColumn<QSize>("minimum");
    QTest::addColumn<QSize>("maximum");

    const QSize none(0, 0);
    const QSize unlimited(kUnlimited, kUnlimited);

    for (const QByteArray &name :
         words("comboBox_portlist comboBox_baudrate comboBox_autotracking "
               "comboBox_autozoom comboBox_targetmissing comboBox_zoomoffset")) {
        QTest::newRow(name.constData()) << QSize(95, 25) << unlimited;
    }
    for (const QByteArray &name :
         words("pushButton_connect pushButton_disconnect pushButton_choose_file "
               "pushButton_start_upgrade pushButton_cancel_upgrade")) {
        QTest::newRow(name.constData()) << QSize(132, 35) << unlimited;
    }
    for (const QByteArray &name :
         words("pushButton_custom_zoom_1 pushButton_custom_zoom_2 pushButton_default "
               "pushButton_apply")) {
        QTest::newRow(name.constData()) << QSize(132, 30) << unlimited;
    }
    QTest::newRow("tab_control") << QSize(959, 469) << unlimited;
    QTest::newRow("groupBox_autozoom") << QSize(0, 25) << unlimited;
    QTest::newRow("groupBox_zoomoffset") << QSize(0, 25) << unlimited;
    QTest::newRow("lineEdit_firmware") << QSize(0, 25) << unlimited;
    QTest::newRow("textEdit_device_info") << none << QSize(460, 120);
    QTest::newRow("groupBox_button") << none << QSize(460, 120);
    for (const QByteArray &name :
         words("MainWindow centralWidget groupBox_banner groupBox_serialport tabWidget "
               "tab_firmware_update groupBox_autotracking groupBox_targetmissing "
               "groupBox_camera_settings groupBox_camera_custom_zoom "
               "groupBox_Cam_Install groupBox_Cam_Custom_Zoom groupBox_step1 groupBox "
               "progressBar_updating textEdit_firmware_info")) {
        QTest::newRow(name.constData()) << none << unlimited;
    }
}

void TestMainWindowForm::setsMinimumAndMaximumSizes()
{
    QFETCH(QSize, minimum);
    QFETCH(QSize, maximum);

    MinimumSizeRecorder recorder;
    init();
    QWidget *sized = widget(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(recorder.minimumSize(sized), minimum);
    QCOMPARE(sized->maximumSize(), maximum);
    QCOMPARE(sized->sizeIncrement(), QSize(0, 0));
}

void TestMainWindowForm::setsSizePolicies_data()
{
    QTest::addColumn<QSizePolicy::Policy>("horizontal");
    QTest::addColumn<QSizePolicy::Policy>("vertical");

    QTest::newRow("groupBox_serialport") << QSizePolicy::Fixed << QSizePolicy::Fixed;
    QTest::newRow("label_port") << QSizePolicy::Maximum << QSizePolicy::Preferred;
    QTest::newRow("comboBox_baudrate") << QSizePolicy::Preferred << QSizePolicy::Fixed;
    QTest::newRow("label_camera_settings") << QSizePolicy::Minimum << QSizePolicy::Minimum;
    QTest::newRow("textEdit_device_info") << QSizePolicy::Preferred << QSizePolicy::Preferred;
    QTest::newRow("lineEdit_firmware") << QSizePolicy::Preferred << QSizePolicy::Maximum;
    for (const QByteArray &name :
         words("pushButton_connect pushButton_disconnect pushButton_custom_zoom_1 "
               "pushButton_custom_zoom_2 pushButton_default pushButton_apply "
               "pushButton_choose_file pushButton_start_upgrade "
               "pushButton_cancel_upgrade")) {
        QTest::newRow(name.constData()) << QSizePolicy::Minimum << QSizePolicy::Fixed;
    }
}

void TestMainWindowForm::setsSizePolicies()
{
    QFETCH(QSizePolicy::Policy, horizontal);
    QFETCH(QSizePolicy::Policy, vertical);

    const QSizePolicy policy = widget(QString::fromLatin1(QTest::currentDataTag()))->sizePolicy();
    QCOMPARE(policy.horizontalPolicy(), horizontal);
    QCOMPARE(policy.verticalPolicy(), vertical);
    QCOMPARE(policy.horizontalStretch(), 0);
    QCOMPARE(policy.verticalStretch(), 0);
}

void TestMainWindowForm::setsIconSizes_data()
{
    QTest::addColumn<QSize>("iconSize");

    QTest::newRow("toolButton_about") << QSize(34, 34);
    QTest::newRow("toolButton_language") << QSize(34, 34);
    QTest::newRow("comboBox_portlist") << QSize(50, 50);
    QTest::newRow("comboBox_baudrate") << QSize(50, 50);
    QTest::newRow("comboBox_autotracking") << QSize(50, 50);
    QTest::newRow("comboBox_autozoom") << QSize(50, 50);
    QTest::newRow("comboBox_targetmissing") << QSize(50, 50);
    QTest::newRow("comboBox_zoomoffset") << QSize(50, 50);
    QTest::newRow("radioButton_upright") << QSize(25, 25);
}

void TestMainWindowForm::setsIconSizes()
{
    QFETCH(QSize, iconSize);

    QCOMPARE(widget(QString::fromLatin1(QTest::currentDataTag()))->property("iconSize").toSize(),
             iconSize);
}

void TestMainWindowForm::setsShortStyleSheetsToTheLetter_data()
{
    QTest::addColumn<QString>("styleSheet");

    QTest::newRow("groupBox_serialport") << "QGroupBox {\n"
                                            "    background-color: transparent;\n"
                                            "    border: none;\n"
                                            "    border-radius: 0px;\n"
                                            "    padding: 0px;\n"
                                            "}";
    QTest::newRow("groupBox_banner") << "QGroupBox {\n"
                                        "    border-image: url(:/images/main_banner.png);\n"
                                        "}";
    QTest::newRow("label_logo_title") << "QLabel {color:white; background-color: transparent;}\n";
    for (const QByteArray &name :
         words("label_port label_baudrate label_autozoom label_targetmissing "
               "label_autozoom_2 label_camera_settings label_camera_custom_zoom")) {
        QTest::newRow(name.constData()) << "QLabel {color:rgb(62, 58, 57)}";
    }
    for (const QByteArray &name :
         words("groupBox_autotracking groupBox_autozoom groupBox_targetmissing "
               "groupBox_zoomoffset")) {
        QTest::newRow(name.constData()) << "QGroupBox {\n"
                                           "    background-color: transparent;\n"
                                           "    padding: 0px;\n"
                                           "    border: none;\n"
                                           "    margin: 0px;\n"
                                           "}";
    }
    for (const QByteArray &name : words("groupBox_camera_settings groupBox_camera_custom_zoom")) {
        QTest::newRow(name.constData()) << "QGroupBox {\n"
                                           "    background-color: transparent;\n"
                                           "    padding: 0px;\n"
                                           "    border: none;\n"
                                           "}";
    }
    for (const QByteArray &name : words("groupBox_Cam_Install groupBox_Cam_Custom_Zoom")) {
        QTest::newRow(name.constData()) << "QGroupBox {\n"
                                           "\tborder: 1px solid gray;\n"
                                           "\tborder-radius: 3px;\n"
                                           "\tbackground-color: transparent;\n"
                                           "    margin: 0px;\n"
                                           "}";
    }
    QTest::newRow("textEdit_device_info") << "border: 1px solid gray;\n"
                                             "border-radius: 3px;\n"
                                             "background-color: transparent;\n";
    QTest::newRow("textEdit_firmware_info") << "border: 1px solid gray;\n"
                                               "border-radius: 3px;\n"
                                               "background-color: transparent;";
    QTest::newRow("groupBox_button") << "border: 0px solid gray;\n"
                                        "border-radius: 3px;\n"
                                        "background-color: transparent;";
    QTest::newRow("progressBar_updating") << "QProgressBar {\n"
                                             "     border: 2px solid grey;\n"
                                             "     border-radius: 5px;\n"
                                             "     background-color: transparent;\n"
                                             " }\n"
                                             "\n"
                                             " QProgressBar::chunk {\n"
                                             "     background-color: #00A0EA;\n"
                                             "     width: 20px;\n"
                                             " }";
    for (const QByteArray &name :
         words("MainWindow centralWidget statusBar tab_control tab_firmware_update "
               "groupBox_step1 groupBox lineEdit_firmware label_autotracking "
               "radioButton_upright radioButton_upside_down")) {
        QTest::newRow(name.constData()) << "";
    }
}

void TestMainWindowForm::setsShortStyleSheetsToTheLetter()
{
    QFETCH(QString, styleSheet);

    QCOMPARE(widget(QString::fromLatin1(QTest::currentDataTag()))->styleSheet(), styleSheet);
}

void TestMainWindowForm::writesEachRuleOfTheLongStyleSheets_data()
{
    QTest::addColumn<QString>("widgetName");
    QTest::addColumn<QString>("selector");
    QTest::addColumn<QString>("declarations");

    const QString openGradient =
        QStringLiteral("qlineargradient(x1:0,y1:0,x2:0,y2:1,"
                       "stop:0 #D3D3D3,stop:0.4 #D8D8D8,stop:0.5 #DDDDDD,stop:1.0 #E1E1E1)");
    const QString disabledGradient =
        QStringLiteral("qlineargradient(x1:0,y1:0,x2:0,y2:1,"
                       "stop:0 #838383,stop:0.4 #A8A8A8,stop:0.5 #ADADAD,stop:1.0 #C1C1C1)");
    const QString tabGradient =
        QStringLiteral("qlineargradient(x1:0,y1:0,x2:0,y2:1,"
                       "stop:0 #E1E1E1,stop:0.4 #DDDDDD,stop:0.5 #D8D8D8,stop:1.0 #D3D3D3)");
    const QString litTabGradient =
        QStringLiteral("qlineargradient(x1:0,y1:0,x2:0,y2:1,"
                       "stop:0 #fafafa,stop:0.4 #f4f4f4,stop:0.5 #e7e7e7,stop:1.0 #fafafa)");
    const QString frame = QStringLiteral("border: 1px solid gray; border-radius: 3px;"
                                         "padding: 1px 18px 1px 3px; min-width: 6em;"
                                         "background: white;");

    struct ComboBox {
        const char *name;
        QString normalText;
        QString disabledText;
    };
    for (const ComboBox &comboBox :
         {ComboBox{"comboBox_portlist", QString(), QString()},
          ComboBox{"comboBox_autotracking", QStringLiteral("color: black"),
                   QStringLiteral("color: transparent")}}) {
        const QString name = QString::fromLatin1(comboBox.name);
        QTest::addRow("%s: white framed field", comboBox.name)
            << name << "QComboBox" << frame + comboBox.normalText;
        QTest::addRow("%s: dark grey field when disabled", comboBox.name)
            << name << "QComboBox:disabled"
            << "background: darkgray;" + comboBox.disabledText;
        QTest::addRow("%s: grey field with shifted text when open", comboBox.name)
            << name << "QComboBox:!editable:on"
            << "padding-top: 3px; padding-left: 4px; background:" + openGradient;
        QTest::addRow("%s: blue drop-down at the top right", comboBox.name)
            << name << "QComboBox::drop-down"
            << "subcontrol-origin: padding; subcontrol-position: top right; width: 20px;"
               "border-left-width: 1px; border-left-color: darkgray; border-left-style: solid;"
               "border-top-right-radius: 3px; border-bottom-right-radius: 3px;"
               "background: qlineargradient(x1:0,y1:0,x2:0,y2:1,stop:0 #f2f9fe,stop:1 #7ec9f3)";
        QTest::addRow("%s: arrow image", comboBox.name) << name << "QComboBox::down-arrow"
                                                        << "image: url(:/images/down_arrow.png)";
        QTest::addRow("%s: arrow on grey when disabled", comboBox.name)
            << name << "QComboBox::down-arrow:disabled"
            << "background:" + openGradient;
        QTest::addRow("%s: arrow shifted on dark grey when open", comboBox.name)
            << name << "QComboBox::down-arrow:on"
            << "background: darkgray; top: 1px; left: 1px";
    }

    const QString button = QStringLiteral("pushButton_connect");
    QTest::newRow("push button: blue with white text")
        << button << "QPushButton"
        << "border: 1px solid #bfe5f9; border-radius: 3px; color: white; min-width: 130px;"
           "background: qlineargradient(x1:0,y1:0,x2:0,y2:1,stop:0 #7ec9f3,stop:1 #00b0ec)";
    QTest::newRow("push button: grey when disabled")
        << button << "QPushButton:disabled"
        << "border: 1px solid gray; background:" + disabledGradient;
    QTest::newRow("push button: grey when off")
        << button << "QPushButton:off"
        << "border: 1px solid gray; background:" + disabledGradient;
    QTest::newRow("push button: thick light border under the mouse")
        << button << "QPushButton:hover"
        << "border: 3px solid #bfe5f9; background: #00b0ec";
    QTest::newRow("push button: thick blue border when pressed")
        << button << "QPushButton:pressed"
        << "border: 3px solid #00b0ec; background: #f2f9fe; color: gray";

    QTest::newRow("about: image above light blue text")
        << "toolButton_about"
        << "QToolButton"
        << "border: none; background-image: url(:/images/abiut_link.png);"
           "background-position: top center; background-repeat: no-repeat;"
           "padding-top: 34px; color: rgb(158, 216, 246)";
    QTest::newRow("about: other image and white text under the mouse")
        << "toolButton_about"
        << "QToolButton:hover"
        << "background-image: url(:/images/abiut_hover.png); color: rgb(255, 255, 255)";
    QTest::newRow("language: image above light blue text")
        << "toolButton_language"
        << "QToolButton"
        << "border: none; background-image: url(:/images/lag_link.png);"
           "background-position: top center; background-repeat: no-repeat;"
           "padding-top: 34px; color: rgb(158, 216, 246)";
    QTest::newRow("language: other image and white text under the mouse")
        << "toolButton_language"
        << "QToolButton:hover"
        << "background-image: url(:/images/lag_hover.png); color: rgb(255, 255, 255)";

    const QString tabs = QStringLiteral("tabWidget");
    QTest::newRow("tabs: framed pane") << tabs << "QTabWidget::pane"
                                       << "border: 1px solid gray; border-radius: 3px";
    QTest::newRow("tabs: bar moved to the right") << tabs << "QTabWidget::tab-bar"
                                                  << "left: 5px";
    QTest::newRow("tabs: grey tab with rounded top")
        << tabs << "QTabBar::tab"
        << "border: 1px solid gray; border-bottom-color: #C2C7CB; border-top-left-radius: 4px;"
           "border-top-right-radius: 4px; min-width: 8ex; padding: 5px; background:"
            + tabGradient;
    QTest::newRow("tabs: lighter when selected")
        << tabs << "QTabBar::tab:selected"
        << "border-color: #9B9B9B; border-bottom-color: #C2C7CB; background:" + litTabGradient;
    QTest::newRow("tabs: lighter under the mouse") << tabs << "QTabBar::tab:hover"
                                                   << "background:" + litTabGradient;
    QTest::newRow("tabs: lower when not selected") << tabs << "QTabBar::tab:!selected"
                                                   << "margin-top: 2px";
}

void TestMainWindowForm::writesEachRuleOfTheLongStyleSheets()
{
    QFETCH(QString, widgetName);
    QFETCH(QString, selector);
    QFETCH(QString, declarations);

    const Declarations actual = rulesOf(widget(widgetName)->styleSheet()).value(selector);
    const Declarations expected = declarationsOf(declarations);
    QCOMPARE(actual.keys(), expected.keys());
    QCOMPARE(actual.values(), expected.values());
}

void TestMainWindowForm::writesNoOtherRulesInTheLongStyleSheets_data()
{
    QTest::addColumn<QStringList>("selectors");

    const QStringList ofComboBoxes{"QComboBox",
                                   "QComboBox:!editable:on",
                                   "QComboBox:disabled",
                                   "QComboBox::down-arrow",
                                   "QComboBox::down-arrow:disabled",
                                   "QComboBox::down-arrow:on",
                                   "QComboBox::drop-down"};
    QTest::newRow("comboBox_portlist") << ofComboBoxes;
    QTest::newRow("comboBox_autotracking") << ofComboBoxes;
    QTest::newRow("pushButton_connect")
        << QStringList{"QPushButton", "QPushButton:disabled", "QPushButton:hover",
                       "QPushButton:off", "QPushButton:pressed"};
    QTest::newRow("toolButton_about") << QStringList{"QToolButton", "QToolButton:hover"};
    QTest::newRow("toolButton_language") << QStringList{"QToolButton", "QToolButton:hover"};
    QTest::newRow("tabWidget") << QStringList{"QTabBar::tab",       "QTabBar::tab:!selected",
                                              "QTabBar::tab:hover", "QTabBar::tab:selected",
                                              "QTabWidget::pane",   "QTabWidget::tab-bar"};
}

void TestMainWindowForm::writesNoOtherRulesInTheLongStyleSheets()
{
    QFETCH(QStringList, selectors);

    QStringList actual =
        rulesOf(widget(QString::fromLatin1(QTest::currentDataTag()))->styleSheet()).keys();
    actual.sort();
    selectors.sort();
    QCOMPARE(actual, selectors);
}

void TestMainWindowForm::sharesStyleSheetsBetweenLikeWidgets_data()
{
    QTest::addColumn<QString>("model");

    QTest::newRow("comboBox_baudrate") << "comboBox_portlist";
    for (const QByteArray &name :
         words("comboBox_autozoom comboBox_targetmissing comboBox_zoomoffset")) {
        QTest::newRow(name.constData()) << "comboBox_autotracking";
    }
    for (const QByteArray &name :
         words("pushButton_disconnect pushButton_custom_zoom_1 pushButton_custom_zoom_2 "
               "pushButton_default pushButton_apply pushButton_choose_file "
               "pushButton_start_upgrade pushButton_cancel_upgrade")) {
        QTest::newRow(name.constData()) << "pushButton_connect";
    }
}

void TestMainWindowForm::sharesStyleSheetsBetweenLikeWidgets()
{
    QFETCH(QString, model);

    QCOMPARE(widget(QString::fromLatin1(QTest::currentDataTag()))->styleSheet(),
             widget(model)->styleSheet());
}

void TestMainWindowForm::namesOnlyTheseImagesInStyleSheets()
{
    static const QRegularExpression url(QStringLiteral("url\\(([^)]*)\\)"));
    QSet<QString> named;
    const auto widgets = m_window->findChildren<QWidget *>();
    for (const QWidget *styled : widgets) {
        for (auto matches = url.globalMatch(styled->styleSheet()); matches.hasNext();) {
            named.insert(matches.next().captured(1));
        }
    }

    const QSet<QString> expected{
        QStringLiteral(":/images/main_banner.png"), QStringLiteral(":/images/abiut_link.png"),
        QStringLiteral(":/images/abiut_hover.png"), QStringLiteral(":/images/lag_link.png"),
        QStringLiteral(":/images/lag_hover.png"),   QStringLiteral(":/images/down_arrow.png")};
    QCOMPARE(named, expected);
    for (const QString &file : named) {
        QVERIFY2(QFile::exists(file), qPrintable(file));
    }
}

void TestMainWindowForm::carriesEveryImage_data()
{
    QTest::addColumn<QString>("file");

    for (const QByteArray &name :
         words("main_banner abiut_link abiut_hover lag_link lag_hover down_arrow "
               "down_arrow_disabled up_arrow up_arrow_disabled spinup spinup_hover "
               "spinup_pressed spinup_off spindown spindown_hover spindown_pressed "
               "spindown_off logo")) {
        QTest::newRow(name.constData())
            << QStringLiteral(":/images/%1.png").arg(QString::fromLatin1(name));
    }
}

void TestMainWindowForm::carriesEveryImage()
{
    QFETCH(QString, file);

    QVERIFY(QFile::exists(file));
    QVERIFY(!QImage(file, "PNG").isNull());
}

void TestMainWindowForm::setsLayoutSpacingAndMargins_data()
{
    QTest::addColumn<QString>("className");
    QTest::addColumn<QString>("owner");
    QTest::addColumn<int>("spacing");
    QTest::addColumn<int>("margin");

    struct Row {
        const char *name;
        const char *className;
        const char *owner;
        int spacing;
        int margin;
    };
    const QVector<Row> rows{
        {"horizontalLayout", "QHBoxLayout", "groupBox_serialport", 6, 11},
        {"horizontalLayout_2", "QHBoxLayout", "groupBox_banner", 6, 11},
        {"horizontalLayout_3", "QHBoxLayout", "groupBox_Cam_Install", 6, 11},
        {"horizontalLayout_4", "QHBoxLayout", "groupBox_Cam_Custom_Zoom", 6, 11},
        {"gridLayout", "QGridLayout", "tab_control", 5, 12},
        {"gridLayout_2", "QGridLayout", "groupBox_button", 5, 12},
        {"verticalLayout", "QVBoxLayout", "groupBox_autotracking", 5, 12},
        {"verticalLayout_2", "QVBoxLayout", "groupBox_autozoom", 5, 12},
        {"verticalLayout_3", "QVBoxLayout", "groupBox_zoomoffset", 5, 12},
        {"verticalLayout_4", "QVBoxLayout", "groupBox_targetmissing", 5, 12},
        {"verticalLayout_5", "QVBoxLayout", "groupBox_camera_settings", 5, 12},
        {"verticalLayout_6", "QVBoxLayout", "groupBox_camera_custom_zoom", 5, 12},
        {"gridLayout_6", "QGridLayout", "tab_firmware_update", 10, 20},
        {"gridLayout_7", "QGridLayout", "groupBox_step1", 12, 12},
        {"gridLayout_8", "QGridLayout", "groupBox", 12, 12},
    };
    for (const Row &row : rows) {
        QTest::newRow(row.name) << QString::fromLatin1(row.className)
                                << QString::fromLatin1(row.owner) << row.spacing << row.margin;
    }
}

void TestMainWindowForm::setsLayoutSpacingAndMargins()
{
    QFETCH(QString, className);
    QFETCH(QString, owner);
    QFETCH(int, spacing);
    QFETCH(int, margin);

    const QLayout *found = layout(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(found);
    QCOMPARE(QString::fromLatin1(found->metaObject()->className()), className);
    QCOMPARE(found->parentWidget()->objectName(), owner);
    QCOMPARE(widget(owner)->layout(), found);
    if (const auto *grid = qobject_cast<const QGridLayout *>(found)) {
        QCOMPARE(grid->horizontalSpacing(), spacing);
        QCOMPARE(grid->verticalSpacing(), spacing);
    } else {
        QCOMPARE(found->spacing(), spacing);
    }
    QCOMPARE(found->contentsMargins(), QMargins(margin, margin, margin, margin));
}

void TestMainWindowForm::linesUpTheItemsOfBoxLayouts_data()
{
    QTest::addColumn<QStringList>("items");

    QTest::newRow("horizontalLayout") << QStringList{
        "label_port",        "comboBox_portlist", "(spacer)",           "label_baudrate",
        "comboBox_baudrate", "(spacer)",          "pushButton_connect", "pushButton_disconnect"};
    QTest::newRow("horizontalLayout_2")
        << QStringList{"label_logo_title", "(spacer)", "toolButton_about", "toolButton_language"};
    QTest::newRow("horizontalLayout_3")
        << QStringList{"radioButton_upright", "radioButton_upside_down"};
    QTest::newRow("horizontalLayout_4")
        << QStringList{"pushButton_custom_zoom_1", "pushButton_custom_zoom_2"};
    QTest::newRow("verticalLayout") << QStringList{"label_autotracking", "comboBox_autotracking"};
    QTest::newRow("verticalLayout_2") << QStringList{"label_autozoom", "comboBox_autozoom"};
    QTest::newRow("verticalLayout_3") << QStringList{"label_autozoom_2", "comboBox_zoomoffset"};
    QTest::newRow("verticalLayout_4")
        << QStringList{"label_targetmissing", "comboBox_targetmissing"};
    QTest::newRow("verticalLayout_5")
        << QStringList{"label_camera_settings", "groupBox_Cam_Install"};
    QTest::newRow("verticalLayout_6")
        << QStringList{"label_camera_custom_zoom", "groupBox_Cam_Custom_Zoom"};
}

void TestMainWindowForm::linesUpTheItemsOfBoxLayouts()
{
    QFETCH(QStringList, items);

    const QLayout *box = layout(QString::fromLatin1(QTest::currentDataTag()));
    QStringList actual;
    for (int index = 0; index < box->count(); ++index) {
        const QWidget *item = box->itemAt(index)->widget();
        actual.append(item ? item->objectName() : QStringLiteral("(spacer)"));
    }
    QCOMPARE(actual, items);
}

void TestMainWindowForm::putsTheItemsOfGridLayoutsIntoCells_data()
{
    QTest::addColumn<QStringList>("items");

    // Each item as "name row,column rows x columns", in the order of its addition.
    QTest::newRow("gridLayout") << QStringList{
        "groupBox_button 4,1 1x1",       "groupBox_autozoom 0,1 1x1",
        "groupBox_zoomoffset 1,1 1x1",   "groupBox_targetmissing 1,0 1x1",
        "groupBox_autotracking 0,0 1x1", "groupBox_camera_settings 3,0 1x1",
        "textEdit_device_info 4,0 1x1",  "groupBox_camera_custom_zoom 3,1 1x1"};
    QTest::newRow("gridLayout_2") << QStringList{"(spacer) 0,0 1x2", "pushButton_default 1,0 1x1",
                                                 "pushButton_apply 1,1 1x1", "(spacer) 2,0 1x2"};
    QTest::newRow("gridLayout_6") << QStringList{"groupBox 1,0 1x1", "groupBox_step1 0,0 1x1",
                                                 "textEdit_firmware_info 2,0 1x1"};
    QTest::newRow("gridLayout_7") << QStringList{"pushButton_choose_file 0,0 1x1",
                                                 "(spacer) 0,1 1x1", "lineEdit_firmware 1,0 1x2"};
    QTest::newRow("gridLayout_8") << QStringList{
        "pushButton_start_upgrade 0,0 1x1", "pushButton_cancel_upgrade 0,1 1x1", "(spacer) 0,2 1x1",
        "progressBar_updating 1,0 1x3"};
}

void TestMainWindowForm::putsTheItemsOfGridLayoutsIntoCells()
{
    QFETCH(QStringList, items);

    const auto *grid =
        qobject_cast<QGridLayout *>(layout(QString::fromLatin1(QTest::currentDataTag())));
    QVERIFY(grid);
    QStringList actual;
    for (int index = 0; index < grid->count(); ++index) {
        int row = -1;
        int column = -1;
        int rows = -1;
        int columns = -1;
        grid->getItemPosition(index, &row, &column, &rows, &columns);
        const QWidget *item = grid->itemAt(index)->widget();
        actual.append(QStringLiteral("%1 %2,%3 %4x%5")
                          .arg(item ? item->objectName() : QStringLiteral("(spacer)"))
                          .arg(row)
                          .arg(column)
                          .arg(rows)
                          .arg(columns));
    }
    QCOMPARE(actual, items);
}

void TestMainWindowForm::keepsGapsAndStretchesApart_data()
{
    QTest::addColumn<QString>("layoutName");
    QTest::addColumn<int>("index");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QSizePolicy::Policy>("horizontal");
    QTest::addColumn<QSizePolicy::Policy>("vertical");

    QTest::newRow("gap before the baud rate")
        << "horizontalLayout" << 2 << QSize(40, 20) << QSizePolicy::Minimum << QSizePolicy::Minimum;
    QTest::newRow("gap before the connect button")
        << "horizontalLayout" << 5 << QSize(40, 20) << QSizePolicy::Minimum << QSizePolicy::Minimum;
    QTest::newRow("stretch that pushes the tool buttons to the right")
        << "horizontalLayout_2" << 1 << QSize(40, 20) << QSizePolicy::Expanding
        << QSizePolicy::Minimum;
    QTest::newRow("gap above Default and Apply")
        << "gridLayout_2" << 0 << QSize(20, 40) << QSizePolicy::Minimum << QSizePolicy::Preferred;
    QTest::newRow("gap below Default and Apply")
        << "gridLayout_2" << 3 << QSize(20, 40) << QSizePolicy::Minimum << QSizePolicy::Preferred;
    QTest::newRow("stretch beside Choose file")
        << "gridLayout_7" << 1 << QSize(40, 20) << QSizePolicy::Expanding << QSizePolicy::Minimum;
    QTest::newRow("stretch beside Cancel")
        << "gridLayout_8" << 2 << QSize(40, 20) << QSizePolicy::Expanding << QSizePolicy::Minimum;
}

void TestMainWindowForm::keepsGapsAndStretchesApart()
{
    QFETCH(QString, layoutName);
    QFETCH(int, index);
    QFETCH(QSize, size);
    QFETCH(QSizePolicy::Policy, horizontal);
    QFETCH(QSizePolicy::Policy, vertical);

    QSpacerItem *spacer = layout(layoutName)->itemAt(index)->spacerItem();
    QVERIFY(spacer);
    QCOMPARE(spacer->sizeHint(), size);
    QCOMPARE(spacer->sizePolicy().horizontalPolicy(), horizontal);
    QCOMPARE(spacer->sizePolicy().verticalPolicy(), vertical);
}

void TestMainWindowForm::startsWithControlsEnabledOrDisabled_data()
{
    QTest::addColumn<bool>("enabled");

    for (const QByteArray &name :
         words("pushButton_disconnect pushButton_start_upgrade pushButton_cancel_upgrade")) {
        QTest::newRow(name.constData()) << false;
    }
    for (const QByteArray &name :
         words("toolButton_about toolButton_language comboBox_portlist comboBox_baudrate "
               "pushButton_connect tabWidget tab_control tab_firmware_update "
               "comboBox_autotracking comboBox_autozoom comboBox_targetmissing "
               "comboBox_zoomoffset radioButton_upright radioButton_upside_down "
               "pushButton_custom_zoom_1 pushButton_custom_zoom_2 textEdit_device_info "
               "pushButton_default pushButton_apply pushButton_choose_file "
               "lineEdit_firmware progressBar_updating textEdit_firmware_info")) {
        QTest::newRow(name.constData()) << true;
    }
}

void TestMainWindowForm::startsWithControlsEnabledOrDisabled()
{
    QFETCH(bool, enabled);

    const QWidget *control = widget(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(control->isEnabled(), enabled);
    QVERIFY(!control->isHidden() || control == m_form.tab_firmware_update);
}

void TestMainWindowForm::makesSomeButtonsFlat_data()
{
    QTest::addColumn<bool>("flat");

    QTest::newRow("pushButton_connect") << false;
    QTest::newRow("pushButton_disconnect") << true;
    QTest::newRow("pushButton_custom_zoom_1") << true;
    QTest::newRow("pushButton_custom_zoom_2") << true;
    QTest::newRow("pushButton_default") << true;
    QTest::newRow("pushButton_apply") << true;
    QTest::newRow("pushButton_choose_file") << false;
    QTest::newRow("pushButton_start_upgrade") << false;
    QTest::newRow("pushButton_cancel_upgrade") << false;
}

void TestMainWindowForm::makesSomeButtonsFlat()
{
    QFETCH(bool, flat);

    const auto *button =
        qobject_cast<QPushButton *>(widget(QString::fromLatin1(QTest::currentDataTag())));
    QCOMPARE(button->isFlat(), flat);
    QVERIFY(!button->autoFillBackground());
    QVERIFY(!button->isCheckable());
}

void TestMainWindowForm::startsWithUprightCheckedAndExclusive() const
{
    QVERIFY(m_form.radioButton_upright->isChecked());
    QVERIFY(!m_form.radioButton_upside_down->isChecked());

    m_form.radioButton_upside_down->click();
    QVERIFY(!m_form.radioButton_upright->isChecked());
    QVERIFY(m_form.radioButton_upside_down->isChecked());

    m_form.radioButton_upright->click();
    QVERIFY(m_form.radioButton_upright->isChecked());
    QVERIFY(!m_form.radioButton_upside_down->isChecked());
}

void TestMainWindowForm::putsToolButtonTextUnderTheIcon() const
{
    QCOMPARE(m_form.toolButton_about->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
    QCOMPARE(m_form.toolButton_language->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
}

void TestMainWindowForm::letsTheOperatorTypeIntoTheTextPanes() const
{
    QVERIFY(!m_form.textEdit_device_info->isReadOnly());
    QVERIFY(!m_form.textEdit_firmware_info->isReadOnly());
    QVERIFY(!m_form.lineEdit_firmware->isReadOnly());

    QTest::keyClicks(m_form.textEdit_device_info, QStringLiteral("note"));
    QCOMPARE(m_form.textEdit_device_info->toPlainText(), QStringLiteral("note"));
}

void TestMainWindowForm::startsWithAnEmptyProgressBar() const
{
    QCOMPARE(m_form.progressBar_updating->value(), 0);
    QCOMPARE(m_form.progressBar_updating->minimum(), 0);
    QCOMPARE(m_form.progressBar_updating->maximum(), 100);
}

void TestMainWindowForm::retranslatesEveryTextInTreeOrder()
{
    const QString inTreeOrder = "Corvane|Port :|Baudrate:|Connect|Disconnect|Corvane|About|Language"
                                "|Default|Apply|Auto Zoom :|OFF|ON|Zoom Offset:|0|1|2|Custom"
                                "|Target Missing Compensation :|OFF|ON (Home)|Preset 0|Preset 1"
                                "|Preset 2|Preset 3|Preset 4|Preset 5|Preset 6|Preset 7"
                                "|Auto Tracking :|OFF|Auto Tracking|Pan Tracking|Tilt Tracking"
                                "|Camera Installed direction :|Upright|Upside down"
                                "|Camera Custom Zoom :|Zoom 1|Zoom 2|Camera Setting|Step 2:|Upgrade"
                                "|Cancel|Step 1:|Choose file|Firmware Update";
    // The titles must find their pages wherever those stand.
    m_form.tabWidget->tabBar()->moveTab(0, 1);
    m_form.progressBar_updating->setFormat(QStringLiteral("%p%"));
    {
        RecordingTranslator translator;
        translator.forget();
        m_form.retranslateUi(m_window.get());
        QCOMPARE(translator.texts(), inTreeOrder.split(QLatin1Char('|')));
        QCOMPARE(translator.contexts(), QSet<QString>{QStringLiteral("MainWindow")});
        QVERIFY(translator.plain());
    }

    for (const Text &text : texts()) {
        QCOMPARE(widget(QString::fromLatin1(text.object))->property(text.property).toString(),
                 QStringLiteral("[%1]").arg(QLatin1String(text.text)));
    }
    QCOMPARE(m_form.comboBox_autozoom->itemText(1), QStringLiteral("[ON]"));
    QCOMPARE(m_form.comboBox_zoomoffset->itemText(3), QStringLiteral("[Custom]"));
    QCOMPARE(m_form.comboBox_targetmissing->itemText(9), QStringLiteral("[Preset 7]"));
    QCOMPARE(m_form.comboBox_autotracking->itemText(3), QStringLiteral("[Tilt Tracking]"));
    QCOMPARE(m_form.tabWidget->tabText(0), QStringLiteral("[Firmware Update]"));
    QCOMPARE(m_form.tabWidget->tabText(1), QStringLiteral("[Camera Setting]"));
    QCOMPARE(m_form.progressBar_updating->format(), QString());

    m_form.retranslateUi(m_window.get());
    QCOMPARE(m_form.pushButton_connect->text(), QStringLiteral("Connect"));
    QCOMPARE(m_form.comboBox_targetmissing->itemText(9), QStringLiteral("Preset 7"));
}

void TestMainWindowForm::keepsTheNameThatAWindowHas()
{
    QMainWindow window;
    window.setObjectName(QStringLiteral("secondWindow"));
    Ui_MainWindow form{};
    form.setupUi(&window);
    QCOMPARE(window.objectName(), QStringLiteral("secondWindow"));
}

void TestMainWindowForm::namesAnUnnamedWindow()
{
    QCOMPARE(m_window->objectName(), QStringLiteral("MainWindow"));
}

void TestMainWindowForm::bindsSlotsByNameAfterEverythingElse()
{
    SlotCountingWindow window;
    Ui_MainWindow form{};
    form.setupUi(&window);

    // Both signals were raised while the form was filled; nobody listened yet.
    QCOMPARE(window.autoTrackingChanges(), 0);
    QCOMPARE(window.tabChanges(), 0);

    form.pushButton_apply->click();
    QCOMPARE(window.applyClicks(), 1);
    form.comboBox_autotracking->setCurrentIndex(2);
    QCOMPARE(window.autoTrackingChanges(), 1);
    form.tabWidget->setCurrentIndex(1);
    QCOMPARE(window.tabChanges(), 1);
}

void TestMainWindowForm::drawsNoTextOnTheProgressBar_data()
{
    QTest::addColumn<int>("value");

    QTest::newRow("at the start") << 0;
    QTest::newRow("half way") << 50;
    QTest::newRow("at the end") << 100;
}

void TestMainWindowForm::drawsNoTextOnTheProgressBar()
{
    QFETCH(int, value);

    m_form.progressBar_updating->setValue(value);
    QCOMPARE(m_form.progressBar_updating->text(), QString());

    const QImage plain = image(m_form.progressBar_updating);
    m_form.progressBar_updating->setTextVisible(false);
    QCOMPARE(image(m_form.progressBar_updating), plain);
}

void TestMainWindowForm::hidesTheTextOfDisabledSettingsComboBoxesOnly_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("showsText");

    for (const QByteArray &name : words("comboBox_autotracking comboBox_autozoom "
                                        "comboBox_targetmissing comboBox_zoomoffset")) {
        QTest::addRow("enabled %s", name.constData()) << QString::fromLatin1(name) << true << true;
        QTest::addRow("disabled %s", name.constData())
            << QString::fromLatin1(name) << false << false;
    }
    for (const QByteArray &name : words("comboBox_portlist comboBox_baudrate")) {
        QTest::addRow("enabled %s", name.constData()) << QString::fromLatin1(name) << true << true;
        QTest::addRow("disabled %s", name.constData())
            << QString::fromLatin1(name) << false << true;
    }
}

void TestMainWindowForm::hidesTheTextOfDisabledSettingsComboBoxesOnly()
{
    QFETCH(QString, name);
    QFETCH(bool, enabled);
    QFETCH(bool, showsText);

    auto *comboBox = qobject_cast<QComboBox *>(widget(name));
    comboBox->clear();
    comboBox->addItems({QStringLiteral("one"), QStringLiteral("another")});
    comboBox->setEnabled(enabled);
    comboBox->setCurrentIndex(0);
    const QImage one = image(comboBox);
    comboBox->setCurrentIndex(1);
    const QImage another = image(comboBox);
    QCOMPARE(one.size(), another.size());
    QCOMPARE(one != another, showsText);
}

void TestMainWindowForm::paintsPushButtonsByTheirState_data()
{
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<bool>("hovered");
    QTest::addColumn<bool>("pressed");
    QTest::addColumn<QColor>("border");
    QTest::addColumn<QColor>("top");
    QTest::addColumn<QColor>("bottom");

    QTest::newRow("at rest") << true << false << false << QColor(0xbf, 0xe5, 0xf9)
                             << QColor(0x7e, 0xc9, 0xf3) << QColor(0x00, 0xb0, 0xec);
    QTest::newRow("disabled") << false << false << false << QColor("gray")
                              << QColor(0x83, 0x83, 0x83) << QColor(0xc1, 0xc1, 0xc1);
    QTest::newRow("under the mouse") << true << true << false << QColor(0xbf, 0xe5, 0xf9)
                                     << QColor(0x00, 0xb0, 0xec) << QColor(0x00, 0xb0, 0xec);
    QTest::newRow("pressed") << true << true << true << QColor(0x00, 0xb0, 0xec)
                             << QColor(0xf2, 0xf9, 0xfe) << QColor(0xf2, 0xf9, 0xfe);
}

void TestMainWindowForm::paintsPushButtonsByTheirState()
{
    QFETCH(bool, enabled);
    QFETCH(bool, hovered);
    QFETCH(bool, pressed);
    QFETCH(QColor, border);
    QFETCH(QColor, top);
    QFETCH(QColor, bottom);

    m_window->grab(); // a button has no place for the mouse before its first layout
    // One raised and one flat button: flatness must not swallow the background.
    for (QPushButton *button : {m_form.pushButton_connect, m_form.pushButton_apply}) {
        button->setEnabled(enabled);
        button->setAttribute(Qt::WA_UnderMouse, hovered);
        // A push button believes in the mouse only when it has seen it move.
        QMouseEvent move(QEvent::MouseMove, button->rect().center(), Qt::NoButton, Qt::NoButton,
                         Qt::NoModifier);
        QCoreApplication::sendEvent(button, &move);
        button->setDown(pressed);
        const QImage look = image(button);
        const int x = 10; // left of the text
        const int last = look.height() - 1;
        QVERIFY2(isNear(look.pixelColor(0, last / 2), border),
                 qPrintable(look.pixelColor(0, last / 2).name()));
        QVERIFY2(isNear(look.pixelColor(x, 3), top), qPrintable(look.pixelColor(x, 3).name()));
        QVERIFY2(isNear(look.pixelColor(x, last - 3), bottom),
                 qPrintable(look.pixelColor(x, last - 3).name()));
    }
}

void TestMainWindowForm::paintsComboBoxesByTheirState_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("enabled");
    QTest::addColumn<QColor>("field");

    QTest::newRow("enabled serial combo box") << "comboBox_baudrate" << true << QColor("white");
    QTest::newRow("disabled serial combo box")
        << "comboBox_baudrate" << false << QColor("darkgray");
    QTest::newRow("enabled settings combo box") << "comboBox_zoomoffset" << true << QColor("white");
    QTest::newRow("disabled settings combo box")
        << "comboBox_zoomoffset" << false << QColor("darkgray");
}

void TestMainWindowForm::paintsComboBoxesByTheirState()
{
    QFETCH(QString, name);
    QFETCH(bool, enabled);
    QFETCH(QColor, field);

    QWidget *comboBox = widget(name);
    comboBox->setEnabled(enabled);
    const QImage look = image(comboBox);
    const int last = look.height() - 1;
    QCOMPARE(look.pixelColor(look.width() / 2, 2).name(), field.name());
    QCOMPARE(look.pixelColor(look.width() / 2, 0).name(), QColor("gray").name());
    // The drop-down keeps its blue in both states.
    const int inDropDown = look.width() - 5;
    QVERIFY2(isNear(look.pixelColor(inDropDown, 2), QColor(0xf2, 0xf9, 0xfe)),
             qPrintable(look.pixelColor(inDropDown, 2).name()));
    QVERIFY2(isNear(look.pixelColor(inDropDown, last - 2), QColor(0x7e, 0xc9, 0xf3)),
             qPrintable(look.pixelColor(inDropDown, last - 2).name()));
}

void TestMainWindowForm::paintsAnOpenComboBoxGrey()
{
    m_window->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_window.get()));
    QComboBox *comboBox = m_form.comboBox_targetmissing;
    comboBox->showPopup();
    QTRY_VERIFY(comboBox->view()->isVisible());

    const QImage look = comboBox->grab().toImage();
    const QColor top = look.pixelColor(look.width() / 2, 1);
    const QColor bottom = look.pixelColor(look.width() / 2, look.height() - 2);
    QVERIFY2(qAbs(top.value() - 0xd3) <= 3, qPrintable(top.name()));
    QVERIFY2(qAbs(bottom.value() - 0xe1) <= 3, qPrintable(bottom.name()));
}

void TestMainWindowForm::setsUpAndPaintsWithoutAWarning()
{
    // Qt only warns of a style sheet that it cannot read, then paints without it.
    warnings().clear();
    const QtMessageHandler previous = qInstallMessageHandler(collectWarnings);
    {
        QMainWindow window;
        Ui_MainWindow form{};
        form.setupUi(&window);
        window.grab();
        form.tabWidget->setCurrentIndex(1);
        window.grab();
    }
    qInstallMessageHandler(previous);
    QCOMPARE(warnings(), QStringList());
}

QTEST_MAIN(TestMainWindowForm)

#include "tst_mainwindowform.moc"
