// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "logcapture.h"
#include "patience.h"
#include "recordingtranslator.h"
#include "rows.h"
#include "ui_mainwindow.h"

#include <QAbstractItemView>
#include <QPointer>

#include <algorithm>
#include <climits>
#include <optional>
#include <vector>

namespace {

/// The form on a plain window of its own.
struct Form : Ui_MainWindow {
    Form()
        : Ui_MainWindow()
    {
        setupUi(&window);
    }

    QMainWindow window;
};

// What a row of the table says of a part; what it leaves out it expects as here.

/// The layout that holds the part, or its parent if no layout does, and the cells in a grid.
struct In {
    const char *place = "";
    int row = 0, column = 0;
    int rows = 1, columns = 1;
};
struct Geometry {
    QRect geometry; ///< not checked if null
};
struct Text {
    const char *text = ""; ///< or title, format, or items separated by "|"; not checked if null
};
struct Font {
    const char *family = nullptr; ///< the default family if null
    int points = 0;               ///< no font of its own if 0
    int weight = QFont::Normal;
    uint alsoSet = 0; ///< besides the size and, if given, the family
};
struct Style {
    const char *styleSheet = ""; ///< to the letter
};
/// A style sheet in which any white space counts as one blank.
struct Rules {
    const char *rules = nullptr; ///< not checked if null
    const char *first = "";      ///< in place of "%1"
    const char *second = "";     ///< in place of "%2"
};
struct Policy {
    std::optional<QSizePolicy::Policy> horizontal; ///< not checked if left out
    std::optional<QSizePolicy::Policy> vertical;
};
struct Minimum {
    QSize minimum{0, 0};
};
struct Maximum {
    QSize maximum{QWIDGETSIZE_MAX, QWIDGETSIZE_MAX};
};
struct IconSize {
    QSize iconSize; ///< not checked if invalid
};
struct Enabled {
    bool enabled = true;
};
struct Flat {
    bool flat = false;
};
/// What a screen reader speaks besides the text.
struct Spoken {
    const char *spokenName = "";
    const char *description = "";
};
/// The control that a label names.
struct Buddy {
    const char *buddy = "";
};
struct Layout {
    int spacing = 0;
    int margin = 0; ///< on all four sides
};
struct Spacer {
    QSize sizeHint;
    QSizePolicy::Policy across = QSizePolicy::Minimum;
    QSizePolicy::Policy down = QSizePolicy::Minimum;
};

template <typename... Settings> struct Row : Settings... {
    template <typename... Given>
    Row(const char *partName, QObject *part, const char *partClass, const Given &...given)
        : name(partName)
        , object(part)
        , className(partClass)
    {
        ((static_cast<Given &>(*this) = given), ...);
    }

    const char *name;
    QObject *object; ///< null for a spacer
    const char *className;
};
using Part = Row<In, Geometry, Text, Font, Style, Rules, Policy, Minimum, Maximum, IconSize,
                 Enabled, Flat, Spoken, Buddy, Layout, Spacer>;

constexpr auto kFixed = QSizePolicy::Fixed;
constexpr auto kMinimum = QSizePolicy::Minimum;
constexpr auto kMaximum = QSizePolicy::Maximum;
constexpr auto kPreferred = QSizePolicy::Preferred;

constexpr Spacer kGap{{40, 20}, kMinimum, kMinimum};
constexpr Spacer kStretch{{40, 20}, QSizePolicy::Expanding, kMinimum};
constexpr Spacer kVerticalGap{{20, 40}, kMinimum, kPreferred};

constexpr Font kFont12{nullptr, 12};
constexpr Font kArial12{"Arial", 12};
constexpr Font kArialBlack12{"Arial Black", 12};
constexpr Font kArialBlack12Plain{"Arial Black", 12, QFont::Normal,
                                  QFont::WeightResolved | QFont::StyleResolved};
constexpr Font kArialBlack26Bold{"Arial Black", 26, QFont::Bold, QFont::WeightResolved};

constexpr Style kSerialGroupStyle{
    "QGroupBox {\n    background-color: transparent;\n    border: none;\n"
    "    border-radius: 0px;\n    padding: 0px;\n}"};
constexpr Style kBannerStyle{"QGroupBox {\n    border-image: url(:/images/main_banner.png);\n}"};
constexpr Style kLogoStyle{"QLabel {color:white; background-color: transparent;}\n"};
constexpr Style kLabelStyle{"QLabel {color:rgb(62, 58, 57)}"};
constexpr Style kSettingGroupStyle{"QGroupBox {\n    background-color: transparent;\n"
                                   "    padding: 0px;\n    border: none;\n    margin: 0px;\n}"};
constexpr Style kCameraGroupStyle{"QGroupBox {\n    background-color: transparent;\n"
                                  "    padding: 0px;\n    border: none;\n}"};
constexpr Style kFramedGroupStyle{"QGroupBox {\n\tborder: 1px solid gray;\n\tborder-radius: 3px;\n"
                                  "\tbackground-color: transparent;\n    margin: 0px;\n}"};
constexpr Style kDeviceInfoStyle{"border: 1px solid gray;\nborder-radius: 3px;\n"
                                 "background-color: transparent;\n"};
constexpr Style kFirmwareInfoStyle{"border: 1px solid gray;\nborder-radius: 3px;\n"
                                   "background-color: transparent;"};
constexpr Style kButtonGroupStyle{"border: 0px solid gray;\nborder-radius: 3px;\n"
                                  "background-color: transparent;"};
constexpr Style kProgressBarStyle{
    "QProgressBar {\n     border: 2px solid grey;\n     border-radius: 5px;\n"
    "     background-color: transparent;\n }\n\n QProgressBar::chunk {\n"
    "     background-color: #00A0EA;\n     width: 20px;\n }"};

constexpr const char *kComboBoxRules = R"(
QComboBox { border: 1px solid gray; border-radius: 3px; padding: 1px 18px 1px 3px; min-width: 6em;
    background: white; %1 }
QComboBox:disabled { background: darkgray; %2 }
QComboBox:!editable:on { background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1,
    stop: 0 #D3D3D3, stop: 0.4 #D8D8D8, stop: 0.5 #DDDDDD, stop: 1.0 #E1E1E1);
    padding-top: 3px; padding-left: 4px; }
QComboBox::drop-down { subcontrol-origin: padding; subcontrol-position: top right; width: 20px;
    border-left-width: 1px; border-left-color: darkgray; border-left-style: solid;
    border-top-right-radius: 3px; border-bottom-right-radius: 3px;
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #f2f9fe, stop: 1 #7ec9f3); }
QComboBox::down-arrow { image: url(:/images/down_arrow.png); }
QComboBox::down-arrow:disabled { background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1,
    stop: 0 #D3D3D3, stop: 0.4 #D8D8D8, stop: 0.5 #DDDDDD, stop: 1.0 #E1E1E1); }
QComboBox::down-arrow:on { background: darkgray; top: 1px; left: 1px; })";
constexpr Rules kSerialComboBoxRules{kComboBoxRules};
constexpr Rules kSettingComboBoxRules{kComboBoxRules, "color: black;", "color: transparent;"};

constexpr const char *kToolButtonRules = R"(
QToolButton { border: none; background-image: url(:/images/%1.png); background-position: top center;
    background-repeat: no-repeat; padding-top: 34px; color: rgb(158, 216, 246); }
QToolButton:hover { background-image: url(:/images/%2.png); color: rgb(255, 255, 255); })";
constexpr Rules kAboutRules{kToolButtonRules, "abiut_link", "abiut_hover"};
constexpr Rules kLanguageRules{kToolButtonRules, "lag_link", "lag_hover"};

constexpr Rules kPushButtonRules{R"(
QPushButton { border: 1px solid #bfe5f9; border-radius: 3px;
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1, stop: 0 #7ec9f3, stop: 1 #00b0ec);
    color: white; min-width: 130px; }
QPushButton:disabled, QPushButton:off { border: 1px solid gray;
    background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1,
        stop: 0 #838383, stop: 0.4 #A8A8A8, stop: 0.5 #ADADAD, stop: 1.0 #C1C1C1); }
QPushButton:hover { border: 3px solid #bfe5f9; background: #00b0ec; }
QPushButton:pressed { border: 3px solid #00b0ec; background: #f2f9fe; color: gray; })"};

constexpr Rules kTabWidgetRules{R"(
QTabWidget::pane { border: 1px solid gray; border-radius: 3px; }
QTabWidget::tab-bar { left: 5px; }
QTabBar::tab { background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1,
        stop: 0 #E1E1E1, stop: 0.4 #DDDDDD, stop: 0.5 #D8D8D8, stop: 1.0 #D3D3D3);
    border: 1px solid gray; border-bottom-color: #C2C7CB; border-top-left-radius: 4px;
    border-top-right-radius: 4px; min-width: 8ex; padding: 5px; }
QTabBar::tab:selected, QTabBar::tab:hover { background: qlineargradient(x1: 0, y1: 0, x2: 0, y2: 1,
    stop: 0 #fafafa, stop: 0.4 #f4f4f4, stop: 0.5 #e7e7e7, stop: 1.0 #fafafa); }
QTabBar::tab:selected { border-color: #9B9B9B; border-bottom-color: #C2C7CB; }
QTabBar::tab:!selected { margin-top: 2px; })"};

/// The table: every part of the form in the order in which it is built, which is also the order in
/// which each layout is filled.
std::vector<Part> partsOf(const Form &form)
{
#define PART(name) #name, form.name
    const auto label = [](const char *name, QObject *part, const auto &...given) {
        return Part(name, part, "QLabel", kFont12, kLabelStyle, given...);
    };
    const auto pushButton = [](const char *name, QObject *part, const auto &...given) {
        return Part(name, part, "QPushButton", Policy{kMinimum, kFixed}, kPushButtonRules,
                    given...);
    };
    const auto settingComboBox = [](const char *name, QObject *part, const auto &...given) {
        return Part(name, part, "QComboBox", Minimum{{95, 25}}, kFont12, kSettingComboBoxRules,
                    IconSize{{50, 50}}, given...);
    };

    return {
        {"MainWindow", form.centralWidget->window(), "QMainWindow", Geometry{{0, 0, 1000, 700}},
         Text{"Corvane"}},
        {PART(centralWidget), "QWidget", In{"MainWindow"}},
        {PART(groupBox_serialport), "QGroupBox", In{"centralWidget"}, Geometry{{20, 100, 960, 80}},
         Policy{kFixed, kFixed}, kSerialGroupStyle, Spoken{"Connection"}},
        {PART(horizontalLayout), "QHBoxLayout", In{"groupBox_serialport"}, Layout{6, 11}},
        label(PART(label_port), In{"horizontalLayout"}, Text{"Port :"},
              Policy{kMaximum, kPreferred}, Buddy{"comboBox_portlist"}),
        {PART(comboBox_portlist), "SerialPortComboBox", In{"horizontalLayout"}, Text{nullptr},
         Minimum{{95, 25}}, kFont12, kSerialComboBoxRules, IconSize{{50, 50}}},
        {"gap before the baud rate", nullptr, "QSpacerItem", In{"horizontalLayout"}, kGap},
        label(PART(label_baudrate), In{"horizontalLayout"}, Text{"Baudrate:"},
              Buddy{"comboBox_baudrate"}),
        {PART(comboBox_baudrate), "QComboBox", In{"horizontalLayout"}, Policy{kPreferred, kFixed},
         Minimum{{95, 25}}, kFont12, kSerialComboBoxRules, IconSize{{50, 50}}},
        {"gap before Connect", nullptr, "QSpacerItem", In{"horizontalLayout"}, kGap},
        pushButton(PART(pushButton_connect), In{"horizontalLayout"}, Text{"Connect"},
                   Minimum{{132, 35}}, kArialBlack12Plain),
        pushButton(PART(pushButton_disconnect), In{"horizontalLayout"}, Text{"Disconnect"},
                   Enabled{false}, Minimum{{132, 35}}, kArialBlack12, Flat{true}),

        {PART(groupBox_banner), "QGroupBox", In{"centralWidget"}, Geometry{{0, 0, 1000, 100}},
         kBannerStyle},
        {PART(horizontalLayout_2), "QHBoxLayout", In{"groupBox_banner"}, Layout{6, 11}},
        {PART(label_logo_title), "QLabel", In{"horizontalLayout_2"}, Text{"Corvane"},
         kArialBlack26Bold, kLogoStyle},
        {"stretch that pushes the tool buttons to the right", nullptr, "QSpacerItem",
         In{"horizontalLayout_2"}, kStretch},
        {PART(toolButton_about), "QToolButton", In{"horizontalLayout_2"}, Text{"About"}, kFont12,
         kAboutRules, IconSize{{34, 34}}, Spoken{"", "Shows the version of Corvane"}},
        {PART(toolButton_language), "QToolButton", In{"horizontalLayout_2"}, Text{"Language"},
         kFont12, kLanguageRules, IconSize{{34, 34}}},

        {PART(tabWidget), "QTabWidget", In{"centralWidget"}, Geometry{{20, 180, 960, 500}}, kFont12,
         kTabWidgetRules, Spoken{"Pages"}},
        {PART(tab_control), "QWidget", In{"qt_tabwidget_stackedwidget"}, Minimum{{959, 469}},
         Spoken{"Camera Setting"}},
        {PART(gridLayout), "QGridLayout", In{"tab_control"}, Layout{5, 12}},
        {PART(groupBox_button), "QGroupBox", In{"gridLayout", 4, 1}, Maximum{{460, 120}},
         kButtonGroupStyle},
        {PART(gridLayout_2), "QGridLayout", In{"groupBox_button"}, Layout{5, 12}},
        {"gap above Default and Apply", nullptr, "QSpacerItem", In{"gridLayout_2", 0, 0, 1, 2},
         kVerticalGap},
        pushButton(PART(pushButton_default), In{"gridLayout_2", 1, 0}, Text{"Default"},
                   Minimum{{132, 30}}, kArialBlack12, Flat{true},
                   Spoken{"", "Fills in the usual settings and sends nothing"}),
        pushButton(PART(pushButton_apply), In{"gridLayout_2", 1, 1}, Text{"Apply"},
                   Minimum{{132, 30}}, kArialBlack12, Flat{true},
                   Spoken{"", "Sends all settings to the camera"}),
        {"gap below Default and Apply", nullptr, "QSpacerItem", In{"gridLayout_2", 2, 0, 1, 2},
         kVerticalGap},
        {PART(groupBox_autozoom), "QGroupBox", In{"gridLayout", 0, 1}, Minimum{{0, 25}},
         kSettingGroupStyle},
        {PART(verticalLayout_2), "QVBoxLayout", In{"groupBox_autozoom"}, Layout{5, 12}},
        label(PART(label_autozoom), In{"verticalLayout_2"}, Text{"Auto Zoom :"},
              Buddy{"comboBox_autozoom"}),
        settingComboBox(PART(comboBox_autozoom), In{"verticalLayout_2"}, Text{"OFF|ON"}),
        {PART(groupBox_zoomoffset), "QGroupBox", In{"gridLayout", 1, 1}, Minimum{{0, 25}},
         kSettingGroupStyle},
        {PART(verticalLayout_3), "QVBoxLayout", In{"groupBox_zoomoffset"}, Layout{5, 12}},
        label(PART(label_autozoom_2), In{"verticalLayout_3"}, Text{"Zoom Offset:"},
              Buddy{"comboBox_zoomoffset"}),
        settingComboBox(PART(comboBox_zoomoffset), In{"verticalLayout_3"}, Text{"0|1|2|Custom"}),
        {PART(groupBox_targetmissing), "QGroupBox", In{"gridLayout", 1, 0}, kSettingGroupStyle},
        {PART(verticalLayout_4), "QVBoxLayout", In{"groupBox_targetmissing"}, Layout{5, 12}},
        label(PART(label_targetmissing), In{"verticalLayout_4"},
              Text{"Target Missing Compensation :"}, Buddy{"comboBox_targetmissing"}),
        settingComboBox(PART(comboBox_targetmissing), In{"verticalLayout_4"},
                        Text{"OFF|ON (Home)|Preset 0|Preset 1|Preset 2"
                             "|Preset 3|Preset 4|Preset 5|Preset 6|Preset 7"}),
        {PART(groupBox_autotracking), "QGroupBox", In{"gridLayout", 0, 0}, kSettingGroupStyle},
        {PART(verticalLayout), "QVBoxLayout", In{"groupBox_autotracking"}, Layout{5, 12}},
        {PART(label_autotracking), "QLabel", In{"verticalLayout"}, Text{"Auto Tracking :"}, kFont12,
         Buddy{"comboBox_autotracking"}},
        settingComboBox(PART(comboBox_autotracking), In{"verticalLayout"},
                        Text{"OFF|Auto Tracking|Pan Tracking|Tilt Tracking"}),
        {PART(groupBox_camera_settings), "QGroupBox", In{"gridLayout", 3, 0}, kCameraGroupStyle},
        {PART(verticalLayout_5), "QVBoxLayout", In{"groupBox_camera_settings"}, Layout{5, 12}},
        label(PART(label_camera_settings), In{"verticalLayout_5"},
              Text{"Camera Installed direction :"}, Policy{kMinimum, kMinimum}),
        {PART(groupBox_Cam_Install), "QGroupBox", In{"verticalLayout_5"}, kFramedGroupStyle,
         Spoken{"Camera Installed direction"}},
        {PART(horizontalLayout_3), "QHBoxLayout", In{"groupBox_Cam_Install"}, Layout{6, 11}},
        {PART(radioButton_upright), "QRadioButton", In{"horizontalLayout_3"}, Text{"Upright"},
         kFont12, IconSize{{25, 25}}},
        {PART(radioButton_upside_down), "QRadioButton", In{"horizontalLayout_3"},
         Text{"Upside down"}, kFont12},
        {PART(textEdit_device_info), "QTextEdit", In{"gridLayout", 4, 0},
         Policy{kPreferred, kPreferred}, Maximum{{460, 120}}, kFont12, kDeviceInfoStyle,
         Spoken{"Device information", "The version of the camera and the last zoom preset"}},
        {PART(groupBox_camera_custom_zoom), "QGroupBox", In{"gridLayout", 3, 1}, kCameraGroupStyle},
        {PART(verticalLayout_6), "QVBoxLayout", In{"groupBox_camera_custom_zoom"}, Layout{5, 12}},
        label(PART(label_camera_custom_zoom), In{"verticalLayout_6"}, Text{"Camera Custom Zoom :"}),
        {PART(groupBox_Cam_Custom_Zoom), "QGroupBox", In{"verticalLayout_6"}, kFramedGroupStyle,
         Spoken{"Camera Custom Zoom"}},
        {PART(horizontalLayout_4), "QHBoxLayout", In{"groupBox_Cam_Custom_Zoom"}, Layout{6, 11}},
        pushButton(PART(pushButton_custom_zoom_1), In{"horizontalLayout_4"}, Text{"Zoom 1"},
                   Minimum{{132, 30}}, kArial12, Flat{true},
                   Spoken{"", "Lets the camera set its first zoom preset"}),
        pushButton(PART(pushButton_custom_zoom_2), In{"horizontalLayout_4"}, Text{"Zoom 2"},
                   Minimum{{132, 30}}, kArial12, Flat{true},
                   Spoken{"", "Lets the camera set its second zoom preset"}),

        {PART(tab_firmware_update), "QWidget", In{"qt_tabwidget_stackedwidget"},
         Spoken{"Firmware Update"}},
        {PART(gridLayout_6), "QGridLayout", In{"tab_firmware_update"}, Layout{10, 20}},
        {PART(groupBox), "QGroupBox", In{"gridLayout_6", 1, 0}, Text{"Step 2:"}, kFont12},
        {PART(gridLayout_8), "QGridLayout", In{"groupBox"}, Layout{12, 12}},
        pushButton(PART(pushButton_start_upgrade), In{"gridLayout_8", 0, 0}, Text{"Upgrade"},
                   Enabled{false}, Minimum{{132, 35}}, kFont12,
                   Spoken{"", "Sends the firmware to the camera"}),
        pushButton(PART(pushButton_cancel_upgrade), In{"gridLayout_8", 0, 1}, Text{"Cancel"},
                   Enabled{false}, Minimum{{132, 35}}, kFont12),
        {"stretch beside Cancel", nullptr, "QSpacerItem", In{"gridLayout_8", 0, 2}, kStretch},
        {PART(progressBar_updating), "QProgressBar", In{"gridLayout_8", 1, 0, 1, 3}, kFont12,
         kProgressBarStyle, Spoken{"Upload"}},
        {PART(groupBox_step1), "QGroupBox", In{"gridLayout_6", 0, 0}, Text{"Step 1:"}, kFont12},
        {PART(gridLayout_7), "QGridLayout", In{"groupBox_step1"}, Layout{12, 12}},
        pushButton(PART(pushButton_choose_file), In{"gridLayout_7", 0, 0}, Text{"Choose file"},
                   Minimum{{132, 35}}, kFont12, Spoken{"", "Chooses the firmware image"}),
        {"stretch beside Choose file", nullptr, "QSpacerItem", In{"gridLayout_7", 0, 1}, kStretch},
        {PART(lineEdit_firmware), "QLineEdit", In{"gridLayout_7", 1, 0, 1, 2},
         Policy{kPreferred, kMaximum}, Minimum{{0, 25}},
         Spoken{"Firmware image", "The path of the file"}},
        {PART(textEdit_firmware_info), "QTextEdit", In{"gridLayout_6", 2, 0}, kFont12,
         kFirmwareInfoStyle,
         Spoken{"Firmware information",
                "The versions of the image and the outcome of the upgrade"}},

        {PART(statusBar), "QStatusBar", In{"MainWindow"}, Maximum{{QWIDGETSIZE_MAX, 20}}},
    };
#undef PART
}

/// Watches a form while it is built.
struct BuildRecorder : QObject {
    BuildRecorder() { QCoreApplication::instance()->installEventFilter(this); }
    void stop() { QCoreApplication::instance()->removeEventFilter(this); }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            for (QObject *object : {watched, static_cast<QChildEvent *>(event)->child()}) {
                if (!objects.contains(object)) {
                    objects.append(object);
                }
            }
        } else if (event->type() == QEvent::DynamicPropertyChange
                   && static_cast<QDynamicPropertyChangeEvent *>(event)->propertyName()
                       == "_q_stylesheet_minw" // set just before the minimum width is
                   && !minimumSizes.contains(watched)) {
            minimumSizes.insert(watched, static_cast<QWidget *>(watched)->minimumSize());
        }
        return false;
    }

    /// In the order of their first appearance as a parent or as a child: a tab page has no parent
    /// until its tab is added, but is a parent long before.
    QVector<QPointer<QObject>> objects;
    /// Those that a style sheet's min-width has replaced since.
    QHash<const QObject *, QSize> minimumSizes;
};

/// A window with slots that the form binds by name, as the real window has.
class WindowWithSlots : public QMainWindow {
    Q_OBJECT

public:
    QStringList calls;

private slots:
    void on_pushButton_apply_clicked() { calls << "apply"; }
    void on_comboBox_autotracking_currentIndexChanged(int index)
    {
        calls << QString::number(index);
    }
    void on_tabWidget_currentChanged(int) { calls << "tab"; }
};

QString textOf(const QObject *widget)
{
    if (const auto *comboBox = qobject_cast<const QComboBox *>(widget)) {
        QStringList items;
        for (int index = 0; index < comboBox->count(); ++index) {
            items.append(comboBox->itemText(index));
        }
        return items.join(QLatin1Char('|'));
    }
    for (const char *property : {"title", "format", "plainText", "text"}) {
        const QVariant text = widget->property(property);
        if (text.isValid()) {
            return text.toString();
        }
    }
    return widget->property("windowTitle").toString();
}

/// As it looks in its final size: the whole window is laid out first.
QImage image(QWidget *widget)
{
    widget->window()->grab();
    return widget->grab().toImage();
}

/// A gradient changes by less than the default in the few rows of pixels at an edge.
void checkColor(const QImage &look, int x, int y, const QString &name, int tolerance = 16)
{
    const QColor actual = look.pixelColor(x, y);
    const QColor expected(name);
    QVERIFY2(qAbs(actual.red() - expected.red()) <= tolerance
                 && qAbs(actual.green() - expected.green()) <= tolerance
                 && qAbs(actual.blue() - expected.blue()) <= tolerance,
             qPrintable(QStringLiteral("%1 at %2,%3").arg(actual.name()).arg(x).arg(y)));
}

} // namespace

/// Checks the form alone, set up on a plain window: what it builds, in which order, how it looks.
class TestMainWindowForm : public QObject {
    Q_OBJECT

public:
    TestMainWindowForm() { m_recorder.stop(); }

private slots:
    void buildsEachPartAsTheTableSays_data() const
    {
        QTest::addColumn<int>("row");

        int row = 0;
        for (const Part &part : m_parts) {
            QTest::newRow(part.name) << row++;
        }
    }

    void buildsEachPartAsTheTableSays() const
    {
        QFETCH(int, row);

        const Part &part = m_parts.at(static_cast<size_t>(row));
        if (part.object != &m_form.window) {
            checkPlace(part);
        }
        if (part.object) {
            QCOMPARE(part.object->objectName(), QLatin1String(part.name));
            QCOMPARE(part.object->metaObject()->className(), part.className);
        }
        if (const auto *layout = qobject_cast<const QLayout *>(part.object)) {
            checkLayout(layout, part);
        } else if (const auto *widget = qobject_cast<const QWidget *>(part.object)) {
            checkWidget(widget, part);
        }
    }

    void buildsInTheOrderOfTheTable() const
    {
        QStringList actual;
        for (const QPointer<QObject> &object : m_recorder.objects) {
            if (object && names().contains(object->objectName())) {
                actual.append(object->objectName());
            }
        }
        QCOMPARE(actual, names());
    }

    void holdsNoOtherNamedPart() const
    {
        static const QRegularExpression notQts("^(?!qt_|_|Scroll(Left|Right)Button$).");
        QStringList actual{m_form.window.objectName()};
        const auto objects = m_form.window.findChildren<QObject *>(notQts);
        for (const QObject *object : objects) {
            actual.append(object->objectName());
        }
        QStringList expected = names();
        actual.sort();
        expected.sort();
        QCOMPARE(actual, expected);
    }

    void installsItsCentralWidgetAndStatusBar() const
    {
        QCOMPARE(m_form.window.centralWidget(), m_form.centralWidget);
        QVERIFY(!m_form.centralWidget->layout());
        // statusBar() would make one if there were none.
        QCOMPARE(m_form.window.findChildren<QStatusBar *>().size(), 1);
        QCOMPARE(m_form.window.statusBar(), m_form.statusBar);
    }

    void keepsItsGeometriesThroughTheFirstLayout()
    {
        Form form;
        form.window.grab();
        for (const Part &part : partsOf(form)) {
            if (!part.geometry.isNull()) {
                QCOMPARE(qobject_cast<QWidget *>(part.object)->geometry(), part.geometry);
            }
        }
    }

    void opensOnTheCameraTab() const
    {
        QCOMPARE(m_form.tabWidget->count(), 2);
        QCOMPARE(m_form.tabWidget->widget(0), m_form.tab_control);
        QCOMPARE(m_form.tabWidget->widget(1), m_form.tab_firmware_update);
        QCOMPARE(m_form.tabWidget->tabText(0), QStringLiteral("Camera Setting"));
        QCOMPARE(m_form.tabWidget->tabText(1), QStringLiteral("Firmware Update"));
        QCOMPARE(m_form.tabWidget->currentIndex(), 0);
    }

    void startsWithUprightCheckedAndExclusive()
    {
        const Form form;
        QVERIFY(form.radioButton_upright->isChecked());
        QVERIFY(!form.radioButton_upside_down->isChecked());

        form.radioButton_upside_down->click();
        QVERIFY(!form.radioButton_upright->isChecked());
        QVERIFY(form.radioButton_upside_down->isChecked());

        form.radioButton_upright->click();
        QVERIFY(form.radioButton_upright->isChecked());
        QVERIFY(!form.radioButton_upside_down->isChecked());
    }

    void letsTheOperatorTypeIntoTheTextPanes()
    {
        const Form form;
        for (QTextEdit *const pane : {form.textEdit_device_info, form.textEdit_firmware_info}) {
            QTest::keyClicks(pane, QStringLiteral("note"));
            QCOMPARE(pane->toPlainText(), QStringLiteral("note"));
        }
    }

    void letsTheOperatorTypeAPathOfAnyLength()
    {
        const Form form;
        const QString path(PATH_MAX, 'x');
        form.lineEdit_firmware->setText(path.chopped(1));
        QTest::keyClick(form.lineEdit_firmware, Qt::Key_X);
        QCOMPARE(form.lineEdit_firmware->text(), path);
    }

    void startsWithAnEmptyProgressBar() const
    {
        QCOMPARE(m_form.progressBar_updating->value(), 0);
        QCOMPARE(m_form.progressBar_updating->minimum(), 0);
        QCOMPARE(m_form.progressBar_updating->maximum(), 100);
    }

    void carriesEveryImage()
    {
        for (const char *name :
             {"main_banner", "abiut_link", "abiut_hover", "lag_link", "lag_hover", "down_arrow",
              "down_arrow_disabled", "up_arrow", "up_arrow_disabled", "spinup", "spinup_hover",
              "spinup_pressed", "spinup_off", "spindown", "spindown_hover", "spindown_pressed",
              "spindown_off", "logo"}) {
            const QImage image(QStringLiteral(":/images/%1.png").arg(QLatin1String(name)), "PNG");
            QVERIFY2(!image.isNull(), name);
        }
        // Those that the form draws are there for screens of twice the density too.
        for (const char *name :
             {"main_banner", "abiut_link", "abiut_hover", "lag_link", "lag_hover", "down_arrow"}) {
            const QString path = QStringLiteral(":/images/%1%2.png").arg(QLatin1String(name));
            QCOMPARE(QImage(path.arg("@2x")).size(), QImage(path.arg("")).size() * 2);
        }
    }

    void retranslatesEveryTextInTreeOrder()
    {
        Form form;
        // The titles must find their pages wherever those are.
        form.tabWidget->tabBar()->moveTab(0, 1);
        form.progressBar_updating->setFormat(QStringLiteral("%p%"));
        QStringList inTreeOrder;
        for (const Part &part : m_parts) {
            inTreeOrder += QString(part.text).split(QLatin1Char('|'), Qt::SkipEmptyParts);
        }
        inTreeOrder.insert(inTreeOrder.indexOf("Step 2:"), QStringLiteral("Camera Setting"));
        inTreeOrder.append(QStringLiteral("Firmware Update"));
        {
            RecordingTranslator translator;
            QCoreApplication::installTranslator(&translator);
            translator.foreignTexts.clear(); // Qt's own request
            form.retranslateUi(&form.window);
            QCOMPARE(translator.texts, inTreeOrder);
            QCOMPARE(translator.foreignTexts, QStringList());
        }

        for (const Part &part : partsOf(form)) {
            if (part.text && *part.text) {
                const QString text = QString(part.text).replace("|", "]|[");
                QCOMPARE(textOf(part.object), QStringLiteral("[%1]").arg(text));
            }
        }
        QCOMPARE(form.tabWidget->tabText(0), QStringLiteral("[Firmware Update]"));
        QCOMPARE(form.tabWidget->tabText(1), QStringLiteral("[Camera Setting]"));
        QCOMPARE(form.progressBar_updating->format(), QString());

        form.retranslateUi(&form.window);
        QCOMPARE(form.pushButton_connect->text(), QStringLiteral("Connect"));
        QCOMPARE(form.comboBox_targetmissing->itemText(9), QStringLiteral("Preset 7"));
    }

    void keepsTheNameThatAWindowHas()
    {
        QMainWindow window;
        window.setObjectName(QStringLiteral("secondWindow"));
        Ui_MainWindow form{};
        form.setupUi(&window);
        QCOMPARE(window.objectName(), QStringLiteral("secondWindow"));
    }

    void bindsSlotsByNameAfterEverythingElse()
    {
        WindowWithSlots window;
        Ui_MainWindow form{};
        form.setupUi(&window);

        // Two of the signals were raised while the form was filled; nothing was connected yet.
        QCOMPARE(window.calls, QStringList());

        form.pushButton_apply->click();
        form.comboBox_autotracking->setCurrentIndex(2);
        form.tabWidget->setCurrentIndex(1);
        QCOMPARE(window.calls, QStringList({"apply", "2", "tab"}));
    }

    void drawsNoTextOnTheProgressBar()
    {
        const Form form;
        for (const int value : {0, 50, 100}) {
            form.progressBar_updating->setValue(value);
            QCOMPARE(form.progressBar_updating->text(), QString());

            form.progressBar_updating->setTextVisible(true);
            const QImage plain = image(form.progressBar_updating);
            form.progressBar_updating->setTextVisible(false);
            QCOMPARE(image(form.progressBar_updating), plain);
        }
    }

    void paintsPushButtonsByTheirState_data()
    {
        QTest::addColumn<QStringList>("colors"); // of the border, the top, the bottom

        QTest::newRow("at rest") << QStringList{"#bfe5f9", "#7ec9f3", "#00b0ec"};
        QTest::newRow("disabled") << QStringList{"gray", "#838383", "#c1c1c1"};
        QTest::newRow("under the mouse") << QStringList{"#bfe5f9", "#00b0ec", "#00b0ec"};
        QTest::newRow("pressed") << QStringList{"#00b0ec", "#f2f9fe", "#f2f9fe"};
    }

    void paintsPushButtonsByTheirState()
    {
        QFETCH(QStringList, colors);

        const QString state = QTest::currentDataTag();
        Form form;
        form.window.grab(); // a button has no place for the mouse before its first layout
        // One raised and one flat button: flatness must not swallow the background.
        for (QPushButton *button : {form.pushButton_connect, form.pushButton_apply}) {
            button->setEnabled(state != "disabled");
            button->setAttribute(Qt::WA_UnderMouse,
                                 state == "under the mouse" || state == "pressed");
            // A push button believes in the mouse only when it has seen it move.
            const QPoint center = button->rect().center();
            QMouseEvent move(QEvent::MouseMove, center, button->mapToGlobal(center), Qt::NoButton,
                             Qt::NoButton, Qt::NoModifier);
            QCoreApplication::sendEvent(button, &move);
            button->setDown(state == "pressed");
            const QImage look = image(button);
            const int x = 10; // left of the text
            const int last = look.height() - 1;
            checkColor(look, 0, last / 2, colors.at(0));
            checkColor(look, x, 3, colors.at(1));
            checkColor(look, x, last - 3, colors.at(2));
        }
    }

    void paintsComboBoxesByTheirState_data()
    {
        addRows<bool>({"showsTextWhenDisabled"},
                      {{"comboBox_portlist", true},
                       {"comboBox_baudrate", true},
                       {"comboBox_autozoom", false},
                       {"comboBox_zoomoffset", false},
                       {"comboBox_targetmissing", false},
                       {"comboBox_autotracking", false}});
    }

    void paintsComboBoxesByTheirState()
    {
        QFETCH(bool, showsTextWhenDisabled);

        const Form form;
        auto *comboBox = form.window.findChild<QComboBox *>(QTest::currentDataTag());
        comboBox->clear();
        comboBox->addItems({QStringLiteral("one"), QStringLiteral("another")});
        for (const bool enabled : {true, false}) {
            comboBox->setEnabled(enabled);
            comboBox->setCurrentIndex(0);
            const QImage one = image(comboBox);
            comboBox->setCurrentIndex(1);
            const QImage look = image(comboBox);
            QCOMPARE(look.size(), one.size());
            QCOMPARE(look != one, enabled || showsTextWhenDisabled);

            const int middle = look.width() / 2;
            checkColor(look, middle, 0, "gray", 0);
            checkColor(look, middle, 2, enabled ? "white" : "darkgray", 0);
            // The drop-down keeps its blue in both states.
            const int inDropDown = look.width() - 5;
            checkColor(look, inDropDown, 2, "#f2f9fe");
            checkColor(look, inDropDown, look.height() - 3, "#7ec9f3");
        }
    }

    void paintsAnOpenComboBoxGrey()
    {
        Form form;
        form.window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form.window, kPatience));
        QComboBox *comboBox = form.comboBox_targetmissing;
        comboBox->showPopup();
        QTRY_VERIFY(comboBox->view()->isVisible());

        const QImage look = comboBox->grab().toImage();
        checkColor(look, look.width() / 2, 1, "#d3d3d3", 3);
        checkColor(look, look.width() / 2, look.height() - 2, "#e1e1e1", 3);
    }

    void setsUpAndPaintsWithoutAWarning()
    {
        // Qt only warns of a style sheet that it cannot read, then paints without it.
        const LogCapture log;
        Form form;
        form.window.grab();
        form.tabWidget->setCurrentIndex(1);
        form.window.grab();
        QCOMPARE(log.texts(), QStringList());
    }

private:
    /// Of all parts but the spacers.
    QStringList names() const
    {
        QStringList names;
        for (const Part &part : m_parts) {
            if (part.object) {
                names.append(QLatin1String(part.name));
            }
        }
        return names;
    }

    int countIn(const char *place, const Part *end) const
    {
        return static_cast<int>(std::count_if(m_parts.data(), end, [&](const Part &part) {
            return QLatin1String(part.place) == QLatin1String(place);
        }));
    }

    /// That the part is the next item of its layout, or a child of its parent.
    void checkPlace(const Part &part) const
    {
        const auto *layout = m_form.window.findChild<QLayout *>(QLatin1String(part.place));
        QVERIFY(layout || part.object);
        if (!layout) {
            const QObject *parent = part.object->parent();
            QCOMPARE(parent ? parent->objectName() : QString(), QLatin1String(part.place));
            return;
        }

        const int index = countIn(part.place, &part);
        QLayoutItem *item = layout->itemAt(index);
        QVERIFY(item);
        QCOMPARE(item->widget(), part.object);
        if (const auto *grid = qobject_cast<const QGridLayout *>(layout)) {
            QVector<int> cells(4);
            grid->getItemPosition(index, &cells[0], &cells[1], &cells[2], &cells[3]);
            QCOMPARE(cells, QVector<int>({part.row, part.column, part.rows, part.columns}));
        }
        if (part.object) {
            QCOMPARE(part.object->parent(), layout->parent());
        } else {
            QVERIFY(item->spacerItem());
            QCOMPARE(item->sizeHint(), part.sizeHint);
            QCOMPARE(item->spacerItem()->sizePolicy(), QSizePolicy(part.across, part.down));
        }
    }

    void checkLayout(const QLayout *layout, const Part &part) const
    {
        QCOMPARE(layout->parentWidget()->layout(), layout);
        QCOMPARE(layout->spacing(), part.spacing);
        QCOMPARE(layout->contentsMargins(),
                 QMargins(part.margin, part.margin, part.margin, part.margin));
        QCOMPARE(layout->count(), countIn(part.name, m_parts.data() + m_parts.size()));
    }

    void checkWidget(const QWidget *widget, const Part &part) const
    {
        if (part.text) {
            QCOMPARE(textOf(widget), QLatin1String(part.text));
        }
        QCOMPARE(widget->isEnabled(), part.enabled);
        QCOMPARE(widget->isHidden(), widget->isWindow() || widget == m_form.tab_firmware_update);
        QVERIFY(!widget->property("readOnly").toBool());
        QVERIFY(!widget->property("editable").toBool());
        if (const auto *comboBox = qobject_cast<const QComboBox *>(widget)) {
            QCOMPARE(comboBox->currentIndex(), comboBox->count() > 0 ? 0 : -1);
        }
        if (const auto *button = qobject_cast<const QPushButton *>(widget)) {
            QVERIFY(!button->isCheckable());
        }

        QCOMPARE(widget->accessibleName(), QLatin1String(part.spokenName));
        QCOMPARE(widget->accessibleDescription(), QLatin1String(part.description));
        if (const auto *label = qobject_cast<const QLabel *>(widget)) {
            const QWidget *const buddy = label->buddy();
            QCOMPARE(buddy ? buddy->objectName() : QString(), QLatin1String(part.buddy));
        }

        if (!part.geometry.isNull()) {
            QCOMPARE(widget->geometry(), part.geometry);
        }
        QCOMPARE(m_recorder.minimumSizes.value(widget, widget->minimumSize()), part.minimum);
        QCOMPARE(widget->maximumSize(), part.maximum);
        QCOMPARE(widget->sizeIncrement(), QSize(0, 0));
        if (part.horizontal && part.vertical) {
            const auto controlType = widget->sizePolicy().controlType();
            QCOMPARE(widget->sizePolicy(),
                     QSizePolicy(*part.horizontal, *part.vertical, controlType));
        }

        QVERIFY(!widget->autoFillBackground());
        QCOMPARE(widget->property("flat").toBool(), part.flat);
        if (const auto *button = qobject_cast<const QToolButton *>(widget)) {
            QCOMPARE(button->toolButtonStyle(), Qt::ToolButtonTextUnderIcon);
        }
        if (part.iconSize.isValid()) {
            QCOMPARE(widget->property("iconSize").toSize(), part.iconSize);
        }
        if (part.rules) {
            const QString rules =
                QString(part.rules).replace("%1", part.first).replace("%2", part.second);
            QCOMPARE(widget->styleSheet().simplified(), rules.simplified());
        } else {
            QCOMPARE(widget->styleSheet(), QLatin1String(part.styleSheet));
        }

        QCOMPARE(widget->testAttribute(Qt::WA_SetFont), part.points > 0);
        if (part.points > 0) {
            const QFont &font = widget->font();
            QCOMPARE(font.family(), part.family ? part.family : QApplication::font().family());
            QCOMPARE(font.pointSize(), part.points);
            QCOMPARE(font.weight(), part.weight);
            QVERIFY(!font.italic());
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
            const uint set = font.resolve();
            const uint family = QFont::FamilyResolved;
#else // which keeps a family as a list of one
            const uint set = font.resolveMask();
            const uint family = QFont::FamiliesResolved;
#endif
            QCOMPARE(set, QFont::SizeResolved | (part.family ? family : 0) | part.alsoSet);
        }
    }

    BuildRecorder m_recorder; // first, to see the form's construction
    const Form m_form;        // for what changes nothing
    const std::vector<Part> m_parts = partsOf(m_form);
};

QTEST_MAIN(TestMainWindowForm)
#include "tst_mainwindowform.moc"
