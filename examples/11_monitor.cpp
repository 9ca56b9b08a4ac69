// An application that shows its packets: one entry in a menu opens the packet monitor.

#include <QApplication>
#include <QMainWindow>
#include <QMenuBar>
#include <xmlmonitor.h>
#include <xmlrouter.h>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    XMLRouter router(nullptr, nullptr, "router");  // no server connection
    XMLMonitor monitor(&router);
    QMainWindow window;
    QMenu *tools = window.menuBar()->addMenu(QStringLiteral("&Tools"));
    tools->addAction(QStringLiteral("&Packets"), &monitor, &QWidget::show);
    window.show();
    return QApplication::exec();
}
