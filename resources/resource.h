// Numbers shared by the resources and the code.

#define IDD_SETTINGS 101 // the settings panel
#define IDI_PLUGIN   110

#define IDC_BROWSE    1008
#define IDC_XSLT_FILE 1009
#define IDC_EXTENSION 1010
