/* The numbers of the module's resources, which registration and the control framework ask for. */
#ifndef PAYLODGE_RESOURCE_H
#define PAYLODGE_RESOURCE_H

#define IDR_TYPE_LIBRARY 1
#define IDS_PROJECT_NAME 100
#define IDR_PAYLODGE 101
#define IDB_TOOLBOX 103
#define IDR_PAYLODGE_CTRL 104

#endif
