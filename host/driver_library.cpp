#include "host/driver_library.h"

#include "host/error.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <dlfcn.h>

namespace kmr {

namespace {

const char *const LIBRARY_NAME = "libostrel_kmr.so.1";

// The records of the interface have QStrings, which differ between major versions of Qt.
void checkQtVersion(const QString &path)
{
    const QString version = qtVersionOf(path);
    if (!version.isEmpty() && version.section('.', 0, 0).toInt() != QT_VERSION_MAJOR) {
        throw Error(
            ErrorKind::Library,
            QString("%1 is built for Qt %2, this program for Qt %3: build both with the same Qt")
                .arg(path, version)
                .arg(QT_VERSION_MAJOR));
    }
}

template <typename Function>
void resolve(QLibrary &library, const char *name, Function &function, QStringList &missing)
{
    function = reinterpret_cast<Function>(library.resolve(name));
    if (function == nullptr)
        missing.append(QString::fromLatin1(name));
}

} // namespace

DriverLibrary::DriverLibrary(const QString &path) : m_library(path)
{
    // A bare name must not be a file of this folder: the system's loader looks it up.
    if (path.contains('/'))
        checkQtVersion(path);
    m_library.setLoadHints(QLibrary::ResolveAllSymbolsHint | QLibrary::PreventUnloadHint);
    if (!m_library.load()) {
        throw Error(ErrorKind::Library,
                    QString("cannot load the driver %1: %2").arg(path, m_library.errorString()));
    }

    QStringList missing;
    DriverFunctions &f = m_functions;
    resolve(m_library, "intf_getProtocolType", f.getProtocolType, missing);
    resolve(m_library, "intf_getDriverParameter", f.getDriverParameter, missing);
    resolve(m_library, "intf_getDriverPropertyPage", f.getDriverPropertyPage, missing);
    resolve(m_library, "intf_SetDriverPropertyPage", f.setDriverPropertyPage, missing);
    resolve(m_library, "intf_setAddrValueChangeCallBack", f.setAddrValueChangeCallBack, missing);
    resolve(m_library, "intf_initProperty", f.initProperty, missing);
    resolve(m_library, "intf_setRcpAddress", f.setRcpAddress, missing);
    resolve(m_library, "intf_checkAddrValidity", f.checkAddrValidity, missing);
    resolve(m_library, "intf_checkAddr", f.checkAddr, missing);
    resolve(m_library, "intf_getRegDiscription", f.getRegDiscription, missing);
    resolve(m_library, "intf_getRegListByType", f.getRegListByType, missing);
    resolve(m_library, "intf_multiCopy", f.multiCopy, missing);
    resolve(m_library, "intf_addrMerge", f.addrMerge, missing);
    resolve(m_library, "intf_addConditionRead", f.addConditionRead, missing);
    resolve(m_library, "intf_getSendFrame", f.getSendFrame, missing);
    resolve(m_library, "intf_dealRcvFrame", f.dealRcvFrame, missing);
    resolve(m_library, "intf_getData", f.getData, missing);
    resolve(m_library, "intf_setData", f.setData, missing);
    if (!missing.isEmpty()) {
        throw Error(ErrorKind::Library, QString("%1 is not a driver for this host: it lacks %2")
                                            .arg(m_library.fileName(), missing.join(", ")));
    }
    checkQtVersion(fileName());
}

QString DriverLibrary::fileName() const
{
    Dl_info info = {};
    if (dladdr(reinterpret_cast<void *>(m_functions.getSendFrame), &info) == 0)
        return m_library.fileName();
    return QFileInfo(QFile::decodeName(info.dli_fname)).absoluteFilePath();
}

QString qtVersionOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = file.readAll();
    const QString content = QString::fromLatin1(bytes.constData(), static_cast<int>(bytes.size()));
    // Qt's symbols have versions; one of them is the version that a library was built with.
    for (const char *trace : {"\\x00Qt_(\\d+\\.\\d+)\\x00", "libQt(\\d+)Core\\.so"}) {
        const auto match = QRegularExpression(trace).match(content);
        if (match.hasMatch())
            return match.captured(1);
    }
    return {};
}

QString findDriver(const QString &directory)
{
    for (const char *place : {".", "../driver", "../lib"}) {
        const QString path = QDir(directory).filePath(QString("%1/%2").arg(place, LIBRARY_NAME));
        if (QFileInfo::exists(path))
            return QDir::cleanPath(path);
    }
    return QString::fromLatin1(LIBRARY_NAME);
}

} // namespace kmr
