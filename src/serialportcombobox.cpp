// SPDX-FileCopyrightText: 2026 The Corvane developers
// SPDX-License-Identifier: MIT

#include "serialportcombobox.h"

#include <QSerialPortInfo>

SerialPortComboBox::SerialPortComboBox(QWidget *parent)
    : QComboBox(parent)
{
    updatePortList();
}

SerialPortComboBox::~SerialPortComboBox() = default;

void SerialPortComboBox::updatePortList()
{
    clear();
    const QList<QSerialPortInfo> ports = QSerialPortInfo::availablePorts();
    for (const QSerialPortInfo &port : ports) {
        addItem(port.portName() + QLatin1String(" (") + port.description() + QLatin1String(")"),
                QVariant());
    }
}

void SerialPortComboBox::showPopup()
{
    updatePortList();
    QComboBox::showPopup();
}
