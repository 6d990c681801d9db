// For the test of the include check: a room without windows that uses one.
#include <QWidget>
