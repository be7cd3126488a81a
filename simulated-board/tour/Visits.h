#pragma once

class Tour;

// What the tour does at each page: it finds the page open in its first state, presses every check
// and leaves the page as it is to be pictured.

void VisitHome(Tour& tour);
void VisitBasic(Tour& tour);
void VisitSerial(Tour& tour);
void VisitWifi(Tour& tour);
void VisitVoice(Tour& tour);
void VisitCan(Tour& tour);
void VisitDatabase(Tour& tour);
void VisitProduction(Tour& tour);
void VisitRemoteAccess(Tour& tour);
void VisitCamera(Tour& tour);
