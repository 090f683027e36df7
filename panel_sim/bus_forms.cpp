#include "panel_sim/bus_forms.h"

OvikOnBus::OvikOnBus(sim::Panel& panel, QObject* parent) : QObject(parent), m_ovik(panel)
{
    connect(&m_ovik, &SimOvik::systemParameterChanged, this, &OvikOnBus::systemParameterChanged);
    connect(&m_ovik, &SimOvik::volatileParameterChanged, this,
            &OvikOnBus::volatileParameterChanged);
}

NfcReaderOnBus::NfcReaderOnBus(sim::Panel& panel, QObject* parent)
    : QObject(parent), m_reader(panel)
{
    connect(&m_reader, &SimNfcReader::dataChanged, this, &NfcReaderOnBus::dataChanged);
    connect(&m_reader, &SimNfcReader::notifyJSON, this, &NfcReaderOnBus::notifyJSON);
}

QByteArray NfcReaderOnBus::start()
{
    m_reader.start();
    return m_reader.read(sim::Memory::size, 0);
}

QByteArray NfcReaderOnBus::stop()
{
    m_reader.stop();
    return {};
}
