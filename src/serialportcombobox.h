// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#pragma once

#include <QComboBox>

/// Lists the serial ports that the system reports, afresh each time its popup is opened.
///
/// Each item reads "name (description)". A rebuilt list starts at its first port: what was selected
/// before is not restored.
class SerialPortComboBox : public QComboBox {
    Q_OBJECT

public:
    explicit SerialPortComboBox(QWidget *parent = nullptr);
    ~SerialPortComboBox() override;

    void updatePortList();
    void showPopup() override;
};
