// Desktop workbench entry point (the main window is being built).
#include <QApplication>
#include <QLabel>

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QLabel label("Vessantorium");
    label.show();
    return app.exec();
}
