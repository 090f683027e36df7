/* The platform's long-running jobs; the rules in OVIKPlatformInterface.h apply. */
#ifndef OVIK_PLATFORM_PROCESSES_H
#define OVIK_PLATFORM_PROCESSES_H

#include <QByteArray>
#include <QMutex>
#include <QString>
#include <QThread>

/** One transfer of a system image to or from the panel; the platform counts the progress. */
class IImageTransferProcess : public QThread
{
    Q_OBJECT

public:
    enum Status { Idle = 0, Running = 1, Ok = 2, Error = 3 };

    explicit IImageTransferProcess(QObject* parent = nullptr) : QThread(parent) {}
    ~IImageTransferProcess() override = default;

public Q_SLOTS:
    void run() override = 0;
    virtual int transferId() const { return m_transferId; }
    virtual int status() { return m_status; }
    virtual QByteArray md5() const { return md5sum; }

Q_SIGNALS:
    void statusChanged(int status);
    void progress(int);

protected:
    Status m_status = Idle;
    int m_transferId = 0;
    QByteArray md5sum;

    static QMutex m_transferIdMutex;
    static QMutex m_ProcessMutex;
    static int m_incrementalTransferId;
};

/** One check or format of a system image; messages and progress are the platform's. */
class IJobProcess : public QThread
{
    Q_OBJECT

public:
    enum Status { Idle = 0, Running = 1, Ok = 2, Error = 3, Reboot = 4 };

    explicit IJobProcess(QObject* parent = nullptr) : QThread(parent) {}
    ~IJobProcess() override = default;

public Q_SLOTS:
    void run() override = 0;
    virtual int jobId() const { return m_jobId; }
    virtual int status() { return m_status; }

Q_SIGNALS:
    void statusChanged(int status, QString message);
    void progress(int);

protected:
    Status m_status = Idle;
    QString m_statusMessage;
    int m_jobId = 0;

    static QMutex m_jobIdMutex;
    static QMutex m_ProcessMutex;
    static int m_incrementalJobId;
};

#endif
