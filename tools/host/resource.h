#define IDD_HOST 1 // the window around the plug-in's settings panel
