#include "KLog.h"

#include <QApplication>
#include <QMessageBox>

#include <cstdarg>

KLog *KLog::ms_instance = nullptr;

void KLog::init(KLog *instance)
{
    ms_instance = instance ? instance : new KLog;
}

void KLog::exit()
{
    delete ms_instance;
    ms_instance = nullptr;
}

KLog::KLog() = default;
KLog::~KLog() = default;

void KLog::WriteLine(const QString &text)
{
    if (!m_logToFile || !m_file.isOpen())
        return;
    for (int i = 0; i < m_depth; ++i)
        m_stream << " | ";
    m_stream << text << "\r\n";
    m_stream.flush();
    m_stream.resetStatus(); // otherwise, after a failed write, the stream would buffer all later lines in memory
}

void KLog::Log(const QString &text)
{
    QMutexLocker locker(&m_mutex);
    WriteLine(text);
    Q_EMIT Logged(text);
}

void KLog::Log(int id, const QString &text)
{
    QMutexLocker locker(&m_mutex);
    WriteLine(text);
    Q_EMIT Logged(id, text);
}

void KLog::Log(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    Log(text);
}

void KLog::Log(int id, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const QString text = QString::vasprintf(format, arguments);
    va_end(arguments);
    Log(id, text);
}

void KLog::EnableLogToFile(const QString &fileName, bool append)
{
    QMutexLocker locker(&m_mutex);
    m_logToFile = true;
    m_file.close(); // because Qt warns if setFileName() is called on an open file
    m_file.setFileName(fileName);
    if (m_file.open(append ? QIODevice::WriteOnly | QIODevice::Append : QIODevice::WriteOnly)) {
        m_stream.setDevice(&m_file);
        m_stream.setCodec("UTF-8");
        return;
    }
    const QString reason = m_file.errorString();
    locker.unlock(); // the message box runs an event loop, in which slots may log
    if (!qobject_cast<QApplication *>(QCoreApplication::instance())) { // creating a widget would abort the program
        qWarning("Can not open file %s: %s", qUtf8Printable(fileName), qUtf8Printable(reason));
        return;
    }
    QMessageBox::critical(nullptr, tr("Critical error"), tr("Can not open file %1").arg(fileName), QMessageBox::Ok);
}

void KLog::DisableLogToFile()
{
    QMutexLocker locker(&m_mutex);
    m_logToFile = false;
    if (m_file.isOpen())
        m_file.close();
}

void KLog::Clear()
{
    QMutexLocker locker(&m_mutex);
    m_file.close();
    m_file.open(QIODevice::WriteOnly);
}
