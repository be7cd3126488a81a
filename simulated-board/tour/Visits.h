#pragma once

class Tour;

// The visit of each page. It begins with the page in its first state, presses every check, and
// leaves the page in the state for its picture.

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
