#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

/// The fields of a request; field 0 is the command word.
class Fields
{
public:
    explicit Fields(const QString& request) : m_fields(request.split(QLatin1Char(';'))) {}

    int count() const { return m_fields.size(); }
    QByteArray word() const { return text(0); }

    /// Returns 0 when the field is not a number or does not fit into an int.
    int number(int field) const { return m_fields.at(field).toInt(); }
    unsigned int unsignedNumber(int field) const
    {
        return static_cast<unsigned int>(number(field));
    }
    QByteArray text(int field) const { return m_fields.at(field).toUtf8(); }

private:
    QStringList m_fields;
};
