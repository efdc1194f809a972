/*
 * Alarm report of the device. The replacement logs each report in one line
 * through COM_printf and hands it to an observer that a process may install.
 */
#ifndef ALMSND_H
#define ALMSND_H

#ifdef __cplusplus
extern "C" {
#endif

/* Reports alarm iCode for camera iCamera at pcAddress, screen position
 * iPosition. Returns 0. */
int ALMSND_AsyErrReport(int iCode, int iCamera, const char* pcAddress, int iPosition,
                        int iReserved);

/* ---- Extension of this replacement ------------------------------------ */
typedef void (*ALMSND_Observer)(int iCode, int iCamera, const char* pcAddress, int iPosition,
                                void* pvContext);
/* Installs the observer (null removes it). */
void ALMSND_SetObserver(ALMSND_Observer pfnObserver, void* pvContext);

#ifdef __cplusplus
}
#endif

#endif /* ALMSND_H */
