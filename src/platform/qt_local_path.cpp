#include "platform/qt_local_path.h"

#include <QDir>
#include <QString>
#include <QtGlobal>

#include <algorithm>

namespace kdx {

std::string localPath(std::string_view path)
{
#ifdef Q_OS_WIN
    return std::string(path);
#else
    struct Folder {
        std::string_view system;
        QString local;
    };
    const Folder folders[] = {{"C:\\Temp", QDir::tempPath()}, {"D:\\Logs", QDir::homePath() + "/Logs"}};
    for (const Folder& f : folders) {
        if (path.substr(0, f.system.size()) != f.system) continue;
        std::string rest(path.substr(f.system.size()));
        std::replace(rest.begin(), rest.end(), '\\', '/');
        return QDir::cleanPath(f.local).toStdString() + rest;
    }
    return std::string(path);
#endif
}

} // namespace kdx
