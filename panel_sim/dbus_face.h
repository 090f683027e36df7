#pragma once

#include "panel_sim/panel_model.h"

#include <QDBusConnection>
#include <QStringList>

/// The D-Bus service of a panel: its objects, under the bus name com.wenu.OVIK.
class DBusFace : public QObject
{
    Q_OBJECT

public:
    /// The names of all objects: the last component of the path, except "OVIK" for the root and
    /// "HWPlugin" for the module of a slot.
    static QStringList objectNames();

    DBusFace(sim::Panel& panel, const QDBusConnection& bus, QObject* parent = nullptr);

    /// Registers the objects, except those in @p missing, and then the bus name, so that clients
    /// which see the name find the objects. @return empty on success, else the error
    QString open(const QStringList& missing);

private:
    bool registerObjects(const QStringList& missing);

    sim::Panel& m_panel;
    QDBusConnection m_bus;
};
