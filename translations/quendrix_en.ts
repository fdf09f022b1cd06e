<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="de">
<context>
    <name>Average</name>
    <message>
        <source>keine Bilder zum Mitteln</source>
        <translation>no pictures to average</translation>
    </message>
    <message>
        <source>%1 ist kein lesbares Bild</source>
        <translation>%1 is not a readable picture</translation>
    </message>
    <message>
        <source>%1 hat %2x%3 Pixel, die anderen Bilder %4x%5</source>
        <translation>%1 has %2x%3 pixels, the other pictures %4x%5</translation>
    </message>
    <message>
        <source>%1 kann nicht geschrieben werden: %2</source>
        <translation>%1 cannot be written: %2</translation>
    </message>
</context>
<context>
    <name>BoardFinder</name>
    <message>
        <source>lässt sich nicht öffnen (%1)</source>
        <translation>cannot be opened (%1)</translation>
    </message>
    <message>
        <source>antwortet „%1“</source>
        <translation>answers “%1”</translation>
    </message>
    <message>
        <source>keine Antwort</source>
        <translation>no answer</translation>
    </message>
</context>
<context>
    <name>CaptureSession</name>
    <message>
        <source>Mittelwert nicht berechnet: </source>
        <translation>Average not computed: </translation>
    </message>
    <message>
        <source>Die Steuerung hat die Pause nach Bild %1 von sich aus beendet.</source>
        <translation>The panel ended the pause after picture %1 by itself.</translation>
    </message>
    <message>
        <source>Die Steuerung verlangt Bild %1, während Bild %2 noch aufgenommen wird: die Kamera braucht zu lange.</source>
        <translation>The panel asks for picture %1 while picture %2 is still being taken: the camera takes too long.</translation>
    </message>
    <message>
        <source>Keine Kamera gewählt.</source>
        <translation>No camera chosen.</translation>
    </message>
    <message>
        <source>Keine Kopie: Bild %1 wird noch aufgenommen.</source>
        <translation>No copy: picture %1 is still being taken.</translation>
    </message>
    <message>
        <source>Die Kamera meldet Bild %1 als aufgenommen, aber %2 fehlt oder ist leer.</source>
        <translation>The camera reports picture %1 as taken, but %2 is missing or empty.</translation>
    </message>
    <message>
        <source>Kopie nicht aufgenommen: </source>
        <translation>Copy not taken: </translation>
    </message>
    <message>
        <source>Mittelwert aus %1 Bildern verlangt, aber keine Bilder der Serie vorhanden.</source>
        <translation>An average of %1 pictures was asked for, but the series has no pictures.</translation>
    </message>
    <message>
        <source>Der vorige Mittelwert wird noch berechnet.</source>
        <translation>The previous average is still being computed.</translation>
    </message>
    <message>
        <source>Kombinieren von %1 Bildern verlangt, aber nur %2 Bilder des Stapels vorhanden.</source>
        <translation>Combining %1 pictures was asked for, but the stack has only %2 pictures.</translation>
    </message>
</context>
<context>
    <name>CommandCamera</name>
    <message>
        <source>Der Aufnahmebefehl ist leer.</source>
        <translation>The capture command is empty.</translation>
    </message>
    <message>
        <source>Im Aufnahmebefehl »%1« ist ein Anführungszeichen nicht geschlossen.</source>
        <translation>The capture command “%1” has a quotation mark that is not closed.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl »%1« nennt kein Programm.</source>
        <translation>The capture command “%1” names no program.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl »%1« enthält kein {file}: so erfährt er nicht, wohin er das Bild schreiben soll.</source>
        <translation>The capture command “%1” holds no {file}: it would not know where to write the picture.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl läuft noch für das vorige Bild.</source>
        <translation>The capture command is still running for the previous picture.</translation>
    </message>
    <message>
        <source>Die Zeitgrenze für den Aufnahmebefehl muss mindestens 1 s betragen, nicht %1 s.</source>
        <translation>The capture command’s time limit must be at least 1 s, not %1 s.</translation>
    </message>
    <message>
        <source>Für das Bild ist keine Datei angegeben.</source>
        <translation>No file is given for the picture.</translation>
    </message>
    <message>
        <source>Die alte Bilddatei »%1« lässt sich nicht entfernen.</source>
        <translation>The old picture file “%1” cannot be removed.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl ist abgestürzt.</source>
        <translation>The capture command crashed.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl endete mit Code %1.</source>
        <translation>The capture command ended with code %1.</translation>
    </message>
    <message>
        <source>Das Programm »%1« lässt sich nicht starten (%2). Ist es installiert und im Suchpfad (PATH)?</source>
        <translation>The program “%1” cannot be started (%2). Is it installed and on the search path (PATH)?</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl kam nicht innerhalb von %1 s zurück und wurde beendet.</source>
        <translation>The capture command did not return within %1 s and was ended.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl hinterließ eine leere Datei »%1«.</source>
        <translation>The capture command left an empty file “%1”.</translation>
    </message>
    <message>
        <source>Der Aufnahmebefehl endete ohne Fehler, aber die Bilddatei »%1« ist nicht entstanden.</source>
        <translation>The capture command ended without an error, but the picture file “%1” was not made.</translation>
    </message>
    <message>
        <source>
Befehl: %1
Aufgerufen als: %2</source>
        <translation>
Command: %1
Run as: %2</translation>
    </message>
    <message>
        <source>
Ausgabe: (keine)</source>
        <translation>
Output: (none)</translation>
    </message>
    <message>
        <source>
Ausgabe:
%1</source>
        <translation>
Output:
%1</translation>
    </message>
</context>
<context>
    <name>ConnectionWatcher</name>
    <message>
        <source>das Gerät ist nicht mehr da (Kabel gezogen oder Steuerung ausgeschaltet?)</source>
        <translation>the device is gone (cable pulled or board switched off?)</translation>
    </message>
    <message>
        <source>Keine Verbindung zur Steuerung an %1: %2</source>
        <translation>No connection to the rig controller on %1: %2</translation>
    </message>
    <message>
        <source>Keine WiFi Verbindung zur Steuerung unter %1: die Verbindung wurde getrennt</source>
        <translation>No WiFi connection to the rig controller at %1: the connection was closed</translation>
    </message>
</context>
<context>
    <name>Fusion</name>
    <message>
        <source>Ausrichten %1/%2</source>
        <translation>Aligning %1/%2</translation>
    </message>
    <message>
        <source>Ausrichten: Optimieren</source>
        <translation>Aligning: optimising</translation>
    </message>
    <message>
        <source>Umrechnen %1/%2</source>
        <translation>Remapping %1/%2</translation>
    </message>
    <message>
        <source>Verschmelzen: Laden %1/%2</source>
        <translation>Fusing: loading %1/%2</translation>
    </message>
    <message>
        <source>Verschmelzen: Maske</source>
        <translation>Fusing: mask</translation>
    </message>
    <message>
        <source>Verschmelzen %1/%2</source>
        <translation>Fusing %1/%2</translation>
    </message>
    <message>
        <source>Verschmelzen: Zusammensetzen</source>
        <translation>Fusing: assembling</translation>
    </message>
    <message>
        <source>Zum Verschmelzen braucht es mindestens 2 Bilder, nicht %1.</source>
        <translation>Fusing needs at least 2 pictures, not %1.</translation>
    </message>
    <message>
        <source>Bild nicht gefunden: %1</source>
        <translation>Picture not found: %1</translation>
    </message>
    <message>
        <source>Das Ergebnis %1 braucht die Endung tif, tiff, png, jpg oder jpeg.</source>
        <translation>The result %1 needs the extension tif, tiff, png, jpg or jpeg.</translation>
    </message>
    <message>
        <source>Der Ordner für das Ergebnis fehlt: %1</source>
        <translation>The folder for the result is missing: %1</translation>
    </message>
    <message>
        <source>Das Ergebnis %1 würde ein Bild des Stapels überschreiben.</source>
        <translation>The result %1 would overwrite a picture of the stack.</translation>
    </message>
    <message>
        <source>align_image_stack (Paket hugin-tools)</source>
        <translation>align_image_stack (package hugin-tools)</translation>
    </message>
    <message>
        <source>enfuse (Paket enfuse)</source>
        <translation>enfuse (package enfuse)</translation>
    </message>
    <message>
        <source>Für die Fokusverschmelzung fehlt auf dem Suchpfad (PATH): %1. Installieren mit: sudo apt-get install %2</source>
        <translation>Focus fusion needs, on the search path (PATH): %1. Install with: sudo apt-get install %2</translation>
    </message>
    <message>
        <source>Fokusverschmelzung abgebrochen.</source>
        <translation>Focus fusion cancelled.</translation>
    </message>
    <message>
        <source>Fokusverschmelzung: interner Fehler (%1)</source>
        <translation>Focus fusion: internal error (%1)</translation>
    </message>
    <message>
        <source>%1 hat %2 Pixel, %3 aber %4: alle Bilder eines Stapels müssen gleich groß sein.</source>
        <translation>%1 has %2 pixels, but %3 has %4: all pictures of a stack must be the same size.</translation>
    </message>
    <message>
        <source>Kein temporärer Ordner für die ausgerichteten Bilder: %1</source>
        <translation>No temporary folder for the aligned pictures: %1</translation>
    </message>
    <message>
        <source>align_image_stack hat %1 statt %2 ausgerichtete Bilder geliefert.</source>
        <translation>align_image_stack delivered %1 aligned pictures instead of %2.</translation>
    </message>
    <message>
        <source>Im Ordner %1 kann nicht geschrieben werden: %2</source>
        <translation>The folder %1 cannot be written to: %2</translation>
    </message>
    <message>
        <source>enfuse hat ein Bild von %1 Pixeln geliefert, die Bilder haben %2.</source>
        <translation>enfuse delivered a picture of %1 pixels, the pictures have %2.</translation>
    </message>
    <message>
        <source>Das Ergebnis konnte nicht als %1 gespeichert werden: %2</source>
        <translation>The result could not be saved as %1: %2</translation>
    </message>
    <message>
        <source>Fertig</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>%1 konnte nicht gestartet werden: %2</source>
        <translation>%1 could not be started: %2</translation>
    </message>
    <message>
        <source>%1 ist abgestürzt</source>
        <translation>%1 crashed</translation>
    </message>
    <message>
        <source>%1 ist mit Exit-Code %2 fehlgeschlagen</source>
        <translation>%1 failed with exit code %2</translation>
    </message>
    <message>
        <source>(keine Ausgabe)</source>
        <translation>(no output)</translation>
    </message>
    <message>
        <source>%1. Letzte Ausgabe:
%2</source>
        <translation>%1. Last output:
%2</translation>
    </message>
</context>
<context>
    <name>Gphoto2Camera</name>
    <message>
        <source>Suchen und Verbinden</source>
        <translation>finding and connecting</translation>
    </message>
    <message>
        <source>Auslösen</source>
        <translation>releasing the shutter</translation>
    </message>
    <message>
        <source>Anlegen des Bildpuffers</source>
        <translation>making the picture buffer</translation>
    </message>
    <message>
        <source>Laden von Bild %1/%2</source>
        <translation>loading picture %1/%2</translation>
    </message>
    <message>
        <source>Lesen der Bilddaten</source>
        <translation>reading the picture data</translation>
    </message>
    <message>
        <source>Das Bild von der Kamera lässt sich nicht nach »%1« schreiben: %2</source>
        <translation>The picture from the camera cannot be written to “%1”: %2</translation>
    </message>
    <message>
        <source>Kamera: Fehler beim %1. %2</source>
        <translation>Camera: error while %1. %2</translation>
    </message>
    <message>
        <source>Die Kamera nimmt noch das vorige Bild auf.</source>
        <translation>The camera is still taking the previous picture.</translation>
    </message>
    <message>
        <source>Für das Bild ist keine Datei angegeben.</source>
        <translation>No file is given for the picture.</translation>
    </message>
    <message>
        <source>Es wurde keine Kamera gefunden. Bitte Kabel und Stromversorgung prüfen, die Kamera einschalten und an ihr den USB-Modus PTP (PC-Verbindung) wählen.</source>
        <translation>No camera was found. Check the cable and the power, switch the camera on and choose the USB mode PTP (PC connection) on it.</translation>
    </message>
    <message>
        <source>Die Kamera ist von einem anderen Programm belegt, meist vom Laufwerks-Monitor der Arbeitsoberfläche (gvfs-gphoto2-volume-monitor), der sie beim Anstecken eingebunden hat. Zum Freigeben die Kamera im Dateimanager aushängen oder »pkill -f gvfs-gphoto2-volume-monitor« ausführen, dann erneut aufnehmen.</source>
        <translation>Another program holds the camera, most often the desktop’s volume monitor (gvfs-gphoto2-volume-monitor), which mounted it when it was plugged in. To release it, unmount the camera in the file manager or run “pkill -f gvfs-gphoto2-volume-monitor”, then take the picture again.</translation>
    </message>
</context>
<context>
    <name>HostWindow</name>
    <message>
        <source>Abbrechen</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Steuerung wird gesucht …</source>
        <translation>Looking for the rig …</translation>
    </message>
    <message>
        <source>Bild %1 aufgenommen (%2 Schritte): %3</source>
        <translation>Picture %1 taken (%2 steps): %3</translation>
    </message>
    <message>
        <source>Kopie aufgenommen: %1</source>
        <translation>Copy taken: %1</translation>
    </message>
    <message>
        <source>Mittelwert aus %1 Bildern: %2</source>
        <translation>Average of %1 pictures: %2</translation>
    </message>
    <message>
        <source>Stapel kombiniert: %1</source>
        <translation>Stack combined: %1</translation>
    </message>
    <message>
        <source>Bildbreite %1 mm</source>
        <translation>Image width %1 mm</translation>
    </message>
    <message>
        <source>Bereit</source>
        <translation>Ready</translation>
    </message>
    <message>
        <source>Steuerung nicht bereit</source>
        <translation>Rig not ready</translation>
    </message>
    <message>
        <source>Noch kein Stapel</source>
        <translation>No stack yet</translation>
    </message>
    <message>
        <source>Simuliert</source>
        <translation>Simulated</translation>
    </message>
    <message>
        <source>Befehl</source>
        <translation>Command</translation>
    </message>
    <message>
        <source>{file}: die Bilddatei, {plane}: die Schicht (ab 1), {position}: Achse 0 in Schritten</source>
        <translation>{file}: the picture file, {plane}: the layer (from 1), {position}: axis 0 in steps</translation>
    </message>
    <message>
        <source>Kamera</source>
        <translation>Camera</translation>
    </message>
    <message>
        <source>Zeitlimit</source>
        <translation>Time limit</translation>
    </message>
    <message>
        <source>Bilder in</source>
        <translation>Pictures in</translation>
    </message>
    <message>
        <source>Die Kamera wird nach der laufenden Aufnahme gewechselt.</source>
        <translation>The camera is changed after the picture being taken.</translation>
    </message>
    <message>
        <source>%1 Bilder werden kombiniert …</source>
        <translation>Combining %1 pictures …</translation>
    </message>
    <message>
        <source>Es wird noch ein Stapel kombiniert; dieser bleibt unkombiniert.</source>
        <translation>A stack is still being combined; this one stays uncombined.</translation>
    </message>
    <message>
        <source>Achtung: </source>
        <translation>Attention: </translation>
    </message>
    <message>
        <source>Steuerung wird abgeschaltet …</source>
        <translation>Shutting the rig down …</translation>
    </message>
    <message>
        <source>Verbindung zur Steuerung wiederhergestellt (%1).</source>
        <translation>Connection to the rig controller restored (%1).</translation>
    </message>
    <message>
        <source>Keine Steuerung gefunden: es gibt keinen seriellen Anschluss.</source>
        <translation>No rig controller found: there is no serial port.</translation>
    </message>
    <message>
        <source>Keine Steuerung gefunden. Gefragt: %1.</source>
        <translation>No rig controller found. Asked: %1.</translation>
    </message>
    <message>
        <source>Bitte prüfen: Kabel und Stromversorgung der Steuerung.</source>
        <translation>Please check the controller's cable and power supply.</translation>
    </message>
    <message>
        <source>Die Bilder bis hierher bleiben im Ordner des Laufs. Nach dem Neuverbinden steht die Steuerung, wo sie zuletzt gemeldet wurde.</source>
        <translation>The pictures taken so far stay in the run's folder. Once reconnected, the rig stands where it last reported.</translation>
    </message>
    <message>
        <source>Die Steuerung wird neu verbunden (%1) …</source>
        <translation>Reconnecting to the rig controller (%1) …</translation>
    </message>
    <message>
        <source>Die Steuerung wird an allen seriellen Anschlüssen gesucht …</source>
        <translation>Looking for the rig controller on every serial port …</translation>
    </message>
    <message>
        <source>Steuerung „%1“ an %2 gefunden; als „port“ in [%3] von %4 eingetragen.</source>
        <translation>Rig controller “%1” found on %2; entered as “port” in [%3] of %4.</translation>
    </message>
</context>
<context>
    <name>LinkBar</name>
    <message>
        <source>Neu verbinden</source>
        <translation>Reconnect</translation>
    </message>
    <message>
        <source>Steuerung suchen</source>
        <translation>Find controller</translation>
    </message>
    <message>
        <source>Die Steuerung noch einmal starten, am eingetragenen Anschluss</source>
        <translation>Start the rig controller again, on the port in the settings</translation>
    </message>
    <message>
        <source>Die Steuerung an allen seriellen Anschlüssen suchen und den gefundenen eintragen</source>
        <translation>Look for the rig controller on every serial port and enter the one found</translation>
    </message>
</context>
<context>
    <name>PictureFolder</name>
    <message>
        <source>Ordner %1 kann nicht angelegt werden</source>
        <translation>The folder %1 cannot be made</translation>
    </message>
    <message>
        <source>in %1 kann kein Ordner für die Aufnahmen angelegt werden</source>
        <translation>no folder for the pictures can be made in %1</translation>
    </message>
</context>
<context>
    <name>RigStartup</name>
    <message>
        <source>Die Steuerung unter %1 („IP“ in [%2] von %3)</source>
        <translation>The board at %1 (“IP” in [%2] of %3)</translation>
    </message>
    <message>
        <source>Die Steuerung an %1 (Anschluss „%2“ in [%3] von %4)</source>
        <translation>The board on %1 (port “%2” in [%3] of %4)</translation>
    </message>
    <message>
        <source>die Steuerung antwortet auf die Kennung, bestätigt aber ihre Befehle nicht (%1 von %2 ohne Antwort)</source>
        <translation>the board answers its identification but does not acknowledge its commands (%1 of %2 unanswered)</translation>
    </message>
    <message>
        <source>Bitte prüfen: die Baudrate („baud“ in der Einstellungsdatei), die Firmware der Steuerung und das Kabel.</source>
        <translation>Please check the baud rate (“baud” in the settings file), the board’s firmware and the cable.</translation>
    </message>
    <message>
        <source>dieses Gerät gibt es nicht</source>
        <translation>there is no such device</translation>
    </message>
    <message>
        <source>keine Berechtigung, oder ein anderes Programm benutzt ihn</source>
        <translation>permission denied, or another program uses it</translation>
    </message>
    <message>
        <source>die Verbindung wurde abgelehnt</source>
        <translation>the connection was refused</translation>
    </message>
    <message>
        <source>diese Adresse ist unbekannt</source>
        <translation>the address is unknown</translation>
    </message>
    <message>
        <source>das Netz ist nicht erreichbar</source>
        <translation>the network cannot be reached</translation>
    </message>
    <message>
        <source>Für die WiFi-Steuerung ist keine Adresse eingetragen („IP“ in [%1] von %2)</source>
        <translation>No address is set for the WiFi rig (“IP” in [%1] of %2)</translation>
    </message>
    <message>
        <source>Keine Steuerung unter %1 gefunden („IP“ in [%2] von %3)</source>
        <translation>No rig found at %1 (“IP” in [%2] of %3)</translation>
    </message>
    <message>
        <source>Keine Steuerung an %1 gefunden (Anschluss „%2“ in [%3] von %4)</source>
        <translation>No rig found on %1 (port “%2” in [%3] of %4)</translation>
    </message>
    <message>
        <source>keine Antwort innerhalb von %1 s</source>
        <translation>no answer within %1 s</translation>
    </message>
    <message>
        <source>der Start schlug fehl: %1</source>
        <translation>the start-up failed: %1</translation>
    </message>
    <message>
        <source>die Verbindung scheiterte: %1</source>
        <translation>the connection failed: %1</translation>
    </message>
    <message>
        <source>der Anschluss lässt sich nicht öffnen: %1</source>
        <translation>the port cannot be opened: %1</translation>
    </message>
    <message>
        <source>keine Antwort</source>
        <translation>no answer</translation>
    </message>
    <message>
        <source>die Steuerung meldet „%1“</source>
        <translation>the panel says “%1”</translation>
    </message>
    <message>
        <source>Bitte prüfen: Stromversorgung und WiFi der Steuerung, die Adresse in der Einstellungsdatei, --board und --ini.</source>
        <translation>Please check the board’s power and WiFi, the address in the settings file, --board and --ini.</translation>
    </message>
    <message>
        <source>Bitte prüfen: Kabel und Stromversorgung der Steuerung, den Anschluss in der Einstellungsdatei (z. B. /dev/ttyACM0), --board und --ini, und ob Sie den Anschluss benutzen dürfen (Gruppe dialout).</source>
        <translation>Please check the board’s cable and power, the port in the settings file (e.g. /dev/ttyACM0), --board and --ini, and that you may use the port (the group dialout).</translation>
    </message>
</context>
<context>
    <name>Shortcuts</name>
    <message>
        <source>Während eines Stapels oder einer Serie wird nicht verfahren.</source>
        <translation>No jogging during a stack or a series.</translation>
    </message>
    <message>
        <source>Achse 0 lässt sich gerade nicht verfahren.</source>
        <translation>Axis 0 cannot be moved just now.</translation>
    </message>
</context>
<context>
    <name>SimCamera</name>
    <message>
        <source>Bild %1 konnte nicht gespeichert werden: %2</source>
        <translation>Picture %1 could not be saved: %2</translation>
    </message>
    <message>
        <source>der Ordner %1 existiert nicht</source>
        <translation>the folder %1 does not exist</translation>
    </message>
    <message>
        <source>Simulierte Kamera: Bild %1 nicht aufgenommen, das vorige Bild entsteht noch</source>
        <translation>Simulated camera: picture %1 not taken, the previous picture is still being made</translation>
    </message>
    <message>
        <source>Bild %1: unbekanntes Dateiformat; die simulierte Kamera schreibt .tif, .tiff und .png</source>
        <translation>Picture %1: unknown file format; the simulated camera writes .tif, .tiff and .png</translation>
    </message>
    <message>
        <source>Simulierte Kamera: die Stellung der Fokusschiene ist unbekannt, Bild %1 nicht aufgenommen</source>
        <translation>Simulated camera: the focusing rail’s position is unknown, picture %1 not taken</translation>
    </message>
    <message>
        <source>Simulierte Kamera: zu wenig Arbeitsspeicher für Bild %1 (%2 x %3 Pixel)</source>
        <translation>Simulated camera: not enough memory for picture %1 (%2 x %3 pixels)</translation>
    </message>
    <message>
        <source>Simulierte Kamera: Bild %1 nicht aufgenommen, %2</source>
        <translation>Simulated camera: picture %1 not taken, %2</translation>
    </message>
    <message>
        <source>Simulierte Kamera: Bild %1 nicht aufgenommen, unerwarteter Fehler</source>
        <translation>Simulated camera: picture %1 not taken, unexpected error</translation>
    </message>
</context>
<context>
    <name>StackBox</name>
    <message>
        <source>Stapel</source>
        <translation>Stack</translation>
    </message>
    <message>
        <source>Speichern</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Beginn, Ende, Ebenen und Pause als Vorlage speichern</source>
        <translation>Save start, end, planes and pause as a preset</translation>
    </message>
    <message>
        <source>Löschen</source>
        <translation>Delete</translation>
    </message>
    <message>
        <source>Die gewählte Vorlage löschen</source>
        <translation>Delete the chosen preset</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Nach dem Bild dieser Ebene anhalten; »Weiter« setzt fort</source>
        <translation>Hold after this plane’s picture; “Resume” goes on</translation>
    </message>
    <message>
        <source>Stopp</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Den Stapel sofort anhalten (Esc)</source>
        <translation>Stop the stack at once (Esc)</translation>
    </message>
    <message>
        <source>Gespeicherte Stapel dieses Aufbaus</source>
        <translation>Stacks kept for this rig</translation>
    </message>
    <message>
        <source>Vorlagen</source>
        <translation>Presets</translation>
    </message>
    <message>
        <source>Weiter</source>
        <translation>Resume</translation>
    </message>
    <message>
        <source>noch etwa %1</source>
        <translation>about %1 left</translation>
    </message>
    <message>
        <source>%1 von %2 Bildern</source>
        <translation>%1 of %2 pictures</translation>
    </message>
    <message>
        <source>Esc hält an, Bild ↑ / Bild ↓ verfährt Achse 0 (mit Umschalt langsam).</source>
        <translation>Esc stops, Page Up / Page Down move axis 0 (slowly with Shift).</translation>
    </message>
    <message>
        <source>Wird angehalten …</source>
        <translation>Stopping …</translation>
    </message>
    <message>
        <source>Anfahrt zum Beginn, %1</source>
        <translation>Approaching the start, %1</translation>
    </message>
    <message>
        <source>Angehalten nach %1; »Weiter« setzt fort.</source>
        <translation>Held after %1; “Resume” goes on.</translation>
    </message>
    <message>
        <source>; hält nach diesem Bild an</source>
        <translation>; holds after this picture</translation>
    </message>
    <message>
        <source>Vorlage übergangen: </source>
        <translation>Preset passed over: </translation>
    </message>
    <message>
        <source>Vorlage »%1«: %2 bis %3 Schritte, %4 Ebenen, Pause %5 ms</source>
        <translation>Preset “%1”: %2 to %3 steps, %4 planes, pause %5 ms</translation>
    </message>
    <message>
        <source>Name der Vorlage:</source>
        <translation>Name of the preset:</translation>
    </message>
    <message>
        <source>Vorlage speichern</source>
        <translation>Save preset</translation>
    </message>
    <message>
        <source>Vorlage »%1« nicht gespeichert: %2</source>
        <translation>Preset “%1” not saved: %2</translation>
    </message>
    <message>
        <source>Vorlage »%1« gespeichert</source>
        <translation>Preset “%1” saved</translation>
    </message>
    <message>
        <source>Vorlage »%1« gelöscht</source>
        <translation>Preset “%1” deleted</translation>
    </message>
</context>
<context>
    <name>StackControl</name>
    <message>
        <source>Es läuft schon ein Stapel oder eine Serie: anhalten mit »Stopp« oder Esc.</source>
        <translation>A stack or a series is running already: stop it with “Stop” or Esc.</translation>
    </message>
    <message>
        <source>abwärts</source>
        <translation>downward</translation>
    </message>
    <message>
        <source>aufwärts</source>
        <translation>upward</translation>
    </message>
    <message>
        <source>Der Stapel läuft von Beginn (%1) %2 und käme so nie zum Ende (%3): er liefe darüber hinaus bis ans Ende der Schiene.

Beginn und Ende tauschen und den Stapel starten?</source>
        <translation>The stack runs from its start (%1) %2 and so would never reach its end (%3): it would run on past it to the end of the rail.

Swap start and end and start the stack?</translation>
    </message>
    <message>
        <source>Stapel</source>
        <translation>Stack</translation>
    </message>
    <message>
        <source>Stapel nicht gestartet: er liefe %1 vom Ende weg.</source>
        <translation>Stack not started: it would run %1, away from its end.</translation>
    </message>
    <message>
        <source>Beginn und Ende getauscht: der Stapel läuft von %1 %2 bis %3.</source>
        <translation>Start and end swapped: the stack runs from %1 %2 to %3.</translation>
    </message>
    <message>
        <source>Der Stapel beginnt bei %1 Schritten und wird von %2 Schritten aus angefahren; Achse 0 reicht aber nur bis %3 Schritte (MaxPosition). Die Steuerung liefe ihn von der jetzigen Stelle aus.

Der Stapel wird nicht gestartet.</source>
        <translation>The stack starts at %1 steps and is approached from %2 steps, but axis 0 reaches only %3 steps (MaxPosition). The panel would run it from where the axis stands now.

The stack is not started.</translation>
    </message>
    <message>
        <source>Stapel nicht gestartet: sein Beginn liegt jenseits des Wegs von Achse 0 (%1 Schritte).</source>
        <translation>Stack not started: its start lies beyond the travel of axis 0 (%1 steps).</translation>
    </message>
    <message>
        <source>Endschalter</source>
        <translation>limit switch</translation>
    </message>
    <message>
        <source>%1 von %2 Bildern</source>
        <translation>%1 of %2 pictures</translation>
    </message>
    <message>
        <source>Stapel vollständig: %1</source>
        <translation>Stack complete: %1</translation>
    </message>
    <message>
        <source>Mittelwert-Serie vollständig: %1</source>
        <translation>Averaging series complete: %1</translation>
    </message>
    <message>
        <source>Stopp</source>
        <translation>Stop</translation>
    </message>
    <message>
        <source>Fehler</source>
        <translation>error</translation>
    </message>
    <message>
        <source>Fenster geschlossen</source>
        <translation>window closed</translation>
    </message>
    <message>
        <source>Stapel abgebrochen (%1): %2</source>
        <translation>Stack stopped (%1): %2</translation>
    </message>
    <message>
        <source>Mittelwert-Serie abgebrochen (%1): %2</source>
        <translation>Averaging series stopped (%1): %2</translation>
    </message>
    <message>
        <source>%1 nicht gesendet: %2</source>
        <translation>%1 not sent: %2</translation>
    </message>
    <message>
        <source>Keine Verbindung zur Steuerung: erst neu verbinden.</source>
        <translation>No connection to the rig controller: reconnect first.</translation>
    </message>
    <message>
        <source>Verbindung verloren</source>
        <translation>connection lost</translation>
    </message>
</context>
<context>
    <name>StackPreset</name>
    <message>
        <source>Beginn</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Ende</source>
        <translation>End</translation>
    </message>
    <message>
        <source>Ebenen</source>
        <translation>Planes</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>%1: &quot;%2&quot; ist keine ganze Zahl von %3 bis %4</source>
        <translation>%1: &quot;%2&quot; is not a whole number from %3 to %4</translation>
    </message>
    <message>
        <source>Die Vorlage braucht einen Namen</source>
        <translation>The preset needs a name</translation>
    </message>
    <message>
        <source>%1, [%2] Eintrag %3: %4</source>
        <translation>%1, [%2] entry %3: %4</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Die Steuerung bestätigt ihre Befehle wieder.</source>
        <translation>The board acknowledges its commands again.</translation>
    </message>
    <message>
        <source>Die Steuerung bestätigt ihre Befehle nicht; jeder Befehl wartet vergeblich auf Antwort.</source>
        <translation>The board does not acknowledge its commands; each command waits for an answer in vain.</translation>
    </message>
    <message>
        <source>Simulierte Steuerung: sie arbeitet mit einer Kopie von %1 (%2); die Datei selbst bleibt unverändert.</source>
        <translation>Simulated rig: it works on a copy of %1 (%2); the file itself stays as it is.</translation>
    </message>
    <message>
        <source>Quendrix – simulierte Steuerung mit einer Kopie von %1</source>
        <translation>Quendrix – simulated rig with a copy of %1</translation>
    </message>
    <message>
        <source>Steuerung nicht gefunden</source>
        <translation>Rig not found</translation>
    </message>
</context>
<context>
    <name>quendrix::Calibration</name>
    <message>
        <source>Neue Meßreihe (alte Werte löschen)?</source>
        <translation>New series of measurements (delete the old values)?</translation>
    </message>
    <message>
        <source>Balgengerät einmessen</source>
        <translation>Calibrate the bellows</translation>
    </message>
    <message>
        <source>Sensorbreite geändert!</source>
        <translation>Sensor width changed!</translation>
    </message>
    <message>
        <source>Sollen die Werte gespeichert werden</source>
        <translation>Save the values?</translation>
    </message>
    <message>
        <source>Synchronliste speichern</source>
        <translation>Save the calibration list</translation>
    </message>
    <message>
        <source>Soll die neue Brennweite gespeichert werden</source>
        <translation>Save the new focal length?</translation>
    </message>
    <message>
        <source>Soll der neue Offsetwert gespeichert werden</source>
        <translation>Save the new offset?</translation>
    </message>
</context>
<context>
    <name>quendrix::CalibrationPlot</name>
    <message>
        <source>Noch keine Messreihe</source>
        <translation>No measurements yet</translation>
    </message>
    <message>
        <source>Maßstab</source>
        <translation>Magnification</translation>
    </message>
    <message>
        <source>Auszug [mm]</source>
        <translation>Extension [mm]</translation>
    </message>
</context>
<context>
    <name>quendrix::Lighting</name>
    <message>
        <source>Intensität für weiß wählen (0...255; 0 = Mittelwert)</source>
        <translation>Choose the intensity of white (0...255; 0 = average)</translation>
    </message>
    <message>
        <source>Intensität für rot wählen (0...255)</source>
        <translation>Choose the intensity of red (0...255)</translation>
    </message>
    <message>
        <source>Intensität für grün wählen (0...255)</source>
        <translation>Choose the intensity of green (0...255)</translation>
    </message>
    <message>
        <source>Intensität für blau wählen (0...255)</source>
        <translation>Choose the intensity of blue (0...255)</translation>
    </message>
    <message>
        <source>Farbe einstellen</source>
        <translation>Set the colour</translation>
    </message>
</context>
<context>
    <name>quendrix::Link</name>
    <message>
        <source>Quendrix wartet auf Freigabe: </source>
        <translation>Quendrix is waiting for the release: </translation>
    </message>
</context>
<context>
    <name>quendrix::Motion</name>
    <message>
        <source>Taktpause</source>
        <translation>Step pause</translation>
    </message>
    <message>
        <source>Spiel</source>
        <translation>Backlash</translation>
    </message>
    <message>
        <source>%1: bitte eine ganze Zahl von %2 bis %3 eingeben</source>
        <translation>%1: please type a whole number from %2 to %3</translation>
    </message>
    <message>
        <source>Objektbereich abfahren</source>
        <translation>Travel the object range</translation>
    </message>
    <message>
        <source>Obere Position erreicht</source>
        <translation>Upper position reached</translation>
    </message>
    <message>
        <source>Untere Position erreicht</source>
        <translation>Lower position reached</translation>
    </message>
</context>
<context>
    <name>quendrix::Optics</name>
    <message>
        <source>Eindeutige Bezeichnung incl. Nah-/Fern-Einstellung eingeben</source>
        <translation>Type a unique name, including the near/far setting</translation>
    </message>
    <message>
        <source>Objektiv zur Liste hinzufügen</source>
        <translation>Add a lens to the list</translation>
    </message>
    <message>
        <source>Eindeutige Bezeichnung eingeben</source>
        <translation>Type a unique name</translation>
    </message>
    <message>
        <source>Neue Bezeichnung für das angezeigte Objektiv</source>
        <translation>New name for the lens shown</translation>
    </message>
    <message>
        <source>Erst ein Objektiv auswählen</source>
        <translation>Choose a lens first</translation>
    </message>
    <message>
        <source>Kein Objektiv mit dieser Brennweite in der Liste</source>
        <translation>No lens with this focal length in the list</translation>
    </message>
</context>
<context>
    <name>quendrix::Panel</name>
    <message>
        <source>Objektiv auswählen oder neues Objektiv eingeben</source>
        <translation>Choose a lens or type a new one</translation>
    </message>
    <message>
        <source>Objektiv auswählen</source>
        <translation>Choose a lens</translation>
    </message>
    <message>
        <source>Steuerung</source>
        <translation>Control</translation>
    </message>
    <message>
        <source>Optik</source>
        <translation>Optics</translation>
    </message>
    <message>
        <source>Achsen</source>
        <translation>Axes</translation>
    </message>
    <message>
        <source>Licht</source>
        <translation>Light</translation>
    </message>
    <message>
        <source>Helligkeit: %1</source>
        <translation>Brightness: %1</translation>
    </message>
    <message>
        <source>Licht %1</source>
        <translation>Light %1</translation>
    </message>
    <message>
        <source>Lichtmodul</source>
        <translation>Light module</translation>
    </message>
    <message>
        <source>Ringlicht</source>
        <translation>Ring light</translation>
    </message>
    <message>
        <source>Abstand</source>
        <translation>Distance</translation>
    </message>
    <message>
        <source>Balgen</source>
        <translation>Bellows</translation>
    </message>
    <message>
        <source>Position [Schritte]</source>
        <extracomment>The readout shows millimetres exactly when its caption holds &quot;mm&quot;, so only the one in millimetres may hold it.</extracomment>
        <translation>Position [steps]</translation>
    </message>
    <message>
        <source>Schritte</source>
        <translation>Steps</translation>
    </message>
    <message>
        <source>Weg</source>
        <translation>Travel</translation>
    </message>
    <message>
        <source>Verfahrweg [Schritte]</source>
        <translation>Travel [steps]</translation>
    </message>
    <message>
        <source>Lauf</source>
        <translation>Run</translation>
    </message>
    <message>
        <source>Richtung</source>
        <translation>Direction</translation>
    </message>
    <message>
        <source>Tempo</source>
        <translation>Speed</translation>
    </message>
    <message>
        <source>Takt</source>
        <translation>Timing</translation>
    </message>
    <message>
        <source>Takt setzen</source>
        <translation>Set timing</translation>
    </message>
    <message>
        <source>Auf</source>
        <translation>Up</translation>
    </message>
    <message>
        <source>Ab</source>
        <translation>Down</translation>
    </message>
    <message>
        <source>schnell</source>
        <translation>fast</translation>
    </message>
    <message>
        <source>langsam</source>
        <translation>slow</translation>
    </message>
    <message>
        <source>sehr langsam</source>
        <translation>very slow</translation>
    </message>
    <message>
        <source>16 Schritte</source>
        <translation>16 steps</translation>
    </message>
    <message>
        <source>mit eingestelltem Tempo</source>
        <translation>at the speed set</translation>
    </message>
    <message>
        <source>Aufwärts, %1</source>
        <translation>Up, %1</translation>
    </message>
    <message>
        <source>Abwärts, %1</source>
        <translation>Down, %1</translation>
    </message>
    <message>
        <source>Heben</source>
        <translation>Raise</translation>
    </message>
    <message>
        <source>Senken</source>
        <translation>Lower</translation>
    </message>
    <message>
        <source>Anheben [mm]</source>
        <translation>Raise by [mm]</translation>
    </message>
    <message>
        <source>Drehen</source>
        <translation>Rotate</translation>
    </message>
    <message>
        <source>, zweites Tempo</source>
        <translation>, second speed</translation>
    </message>
    <message>
        <source>Balgen öffnen</source>
        <translation>Open the bellows</translation>
    </message>
    <message>
        <source>Zu</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Balgen schließen</source>
        <translation>Close the bellows</translation>
    </message>
    <message>
        <source>Balgenauszug</source>
        <translation>Bellows extension</translation>
    </message>
    <message>
        <source>Auszug [mm]</source>
        <translation>Extension [mm]</translation>
    </message>
    <message>
        <source>Bildbreite [mm]</source>
        <translation>Image width [mm]</translation>
    </message>
    <message>
        <source>Sehfeld</source>
        <translation>Field of view</translation>
    </message>
    <message>
        <source>Sehfeld [mm]</source>
        <translation>Field of view [mm]</translation>
    </message>
    <message>
        <source>Einmessen</source>
        <translation>Calibrate</translation>
    </message>
    <message>
        <source>Aufnehmen</source>
        <translation>Capture</translation>
    </message>
    <message>
        <source>Fertig</source>
        <translation>Done</translation>
    </message>
    <message>
        <source>Kopie</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>Fokusstapel</source>
        <translation>Focus stack</translation>
    </message>
    <message>
        <source>Beginn</source>
        <translation>Start</translation>
    </message>
    <message>
        <source>Ende</source>
        <translation>End</translation>
    </message>
    <message>
        <source>Ebenen</source>
        <translation>Planes</translation>
    </message>
    <message>
        <source>Weg [mm]</source>
        <translation>Travel [mm]</translation>
    </message>
    <message>
        <source>Auflösung</source>
        <translation>Resolution</translation>
    </message>
    <message>
        <source>Stapel</source>
        <translation>Stack</translation>
    </message>
    <message>
        <source>Mittelwert</source>
        <translation>Average</translation>
    </message>
    <message>
        <source>Schicht: %1</source>
        <extracomment>The layer counter: the panel reads its number back from after &quot;: &quot;, which must stay.</extracomment>
        <translation>Layer: %1</translation>
    </message>
    <message>
        <source>Kombinieren</source>
        <translation>Combine</translation>
    </message>
    <message>
        <source>Objektivwechsler</source>
        <translation>Lens changer</translation>
    </message>
    <message>
        <source>Objektiv an Position %1; ein Klick schwenkt es ein</source>
        <translation>Lens at position %1; a click turns it in</translation>
    </message>
    <message>
        <source>Null</source>
        <translation>Zero</translation>
    </message>
    <message>
        <source>Max</source>
        <translation>Max</translation>
    </message>
    <message>
        <source>Oben</source>
        <translation>Top</translation>
    </message>
    <message>
        <source>Unten</source>
        <translation>Bottom</translation>
    </message>
    <message>
        <source>Mitte</source>
        <translation>Middle</translation>
    </message>
    <message>
        <source>Referenzpunkte</source>
        <translation>Reference points</translation>
    </message>
    <message>
        <source>Kennung des Steuergeräts</source>
        <translation>The board’s identification</translation>
    </message>
    <message>
        <source>Zuletzt empfangen</source>
        <translation>Last received</translation>
    </message>
    <message>
        <source>Direktanzeige</source>
        <translation>Direct display</translation>
    </message>
    <message>
        <source>Sensorbreite [mm]</source>
        <translation>Sensor width [mm]</translation>
    </message>
    <message>
        <source>Bildbreite [Pixel]</source>
        <translation>Image width [pixels]</translation>
    </message>
    <message>
        <source>Basisauflösung [Pixel]</source>
        <translation>Base resolution [pixels]</translation>
    </message>
    <message>
        <source>Zwischenringe [mm]</source>
        <translation>Extension tubes [mm]</translation>
    </message>
    <message>
        <source>Objektiv</source>
        <translation>Lens</translation>
    </message>
    <message>
        <source>Neu</source>
        <translation>New</translation>
    </message>
    <message>
        <source>Umbenennen</source>
        <translation>Rename</translation>
    </message>
    <message>
        <source>Speichern</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>Autofokus</source>
        <translation>Autofocus</translation>
    </message>
    <message>
        <source>Kalibrierung</source>
        <translation>Calibration</translation>
    </message>
    <message>
        <source>Brennweite [mm]</source>
        <translation>Focal length [mm]</translation>
    </message>
    <message>
        <source>Balgenberechnung</source>
        <translation>Bellows calculation</translation>
    </message>
    <message>
        <source>Breite|^ Auszug|^ B/G |^ Fokus |^      s0</source>
        <extracomment>The calibration list&apos;s column titles, separated by &quot;|&quot;; a leading &quot;^&quot; centres one. B/G: the magnification (image to object), s0: the lens&apos; offset.</extracomment>
        <translation>Width|^ Extension|^ Magn. |^ Focus |^      s0</translation>
    </message>
    <message>
        <source>Zeile löschen</source>
        <translation>Delete row</translation>
    </message>
    <message>
        <source>Achse 0 (Abstand)</source>
        <translation>Axis 0 (distance)</translation>
    </message>
    <message>
        <source>Achse 1 (Balgen)</source>
        <translation>Axis 1 (bellows)</translation>
    </message>
    <message>
        <source>Endschalter</source>
        <translation>Limit switches</translation>
    </message>
    <message>
        <source>Drehrichtung umkehren</source>
        <translation>Reverse rotation</translation>
    </message>
    <message>
        <source>Encodertyp</source>
        <translation>Encoder type</translation>
    </message>
    <message>
        <source>Encoderart</source>
        <translation>Encoder kind</translation>
    </message>
    <message>
        <source>Mikroschritt</source>
        <translation>Microsteps</translation>
    </message>
    <message>
        <source>Teilung</source>
        <translation>Division</translation>
    </message>
    <message>
        <source>Antrieb</source>
        <translation>Drive</translation>
    </message>
    <message>
        <source>Spiel setzen</source>
        <translation>Set backlash</translation>
    </message>
    <message>
        <source>Steigung [mm/U]</source>
        <translation>Lead [mm/rev]</translation>
    </message>
    <message>
        <source>Schritte/U</source>
        <translation>Steps/rev</translation>
    </message>
    <message>
        <source>Spiel [Schritte]</source>
        <translation>Backlash [steps]</translation>
    </message>
    <message>
        <source>Verbindung</source>
        <translation>Connection</translation>
    </message>
    <message>
        <source>Seriell</source>
        <translation>Serial</translation>
    </message>
    <message>
        <source>Setzen</source>
        <translation>Apply</translation>
    </message>
    <message>
        <source>Endschalter und Richtung übernehmen</source>
        <translation>Send the limit switches and directions to the board</translation>
    </message>
    <message>
        <source>Typ</source>
        <translation>Type</translation>
    </message>
    <message>
        <source>Objektive</source>
        <translation>Lenses</translation>
    </message>
    <message>
        <source>Präp.</source>
        <translation>Specimen</translation>
    </message>
    <message>
        <source>Anheben [Schritte]</source>
        <translation>Raise by [steps]</translation>
    </message>
    <message>
        <source>Auflicht</source>
        <translation>Incident light</translation>
    </message>
    <message>
        <source>Durchlicht</source>
        <translation>Transmitted light</translation>
    </message>
    <message>
        <source>Position [mm]</source>
        <extracomment>Must hold &quot;mm&quot;: the readout shows millimetres exactly when its caption does.</extracomment>
        <translation>Position [mm]</translation>
    </message>
    <message>
        <source>Auf</source>
        <comment>the bellows opens</comment>
        <translation>Open</translation>
    </message>
    <message>
        <source>Übernehmen</source>
        <translation>Use</translation>
    </message>
    <message>
        <source>Die vorgeschlagene Zahl der Ebenen übernehmen</source>
        <translation>Use the suggested number of planes</translation>
    </message>
    <message>
        <source>Blende</source>
        <translation>Aperture</translation>
    </message>
    <message>
        <source>Unschärfe [mm]</source>
        <translation>Blur [mm]</translation>
    </message>
    <message>
        <source>Zerstreuungskreis: der Durchmesser, der noch als scharf gilt</source>
        <translation>Circle of confusion: the diameter that still counts as sharp</translation>
    </message>
</context>
<context>
    <name>quendrix::RuntimeError</name>
    <message>
        <source>Laufzeitfehler %1: %2</source>
        <translation>Run-time error %1: %2</translation>
    </message>
    <message>
        <source>Unzulässiger Prozeduraufruf oder ungültiges Argument</source>
        <translation>Invalid procedure call or argument</translation>
    </message>
    <message>
        <source>Überlauf</source>
        <translation>Overflow</translation>
    </message>
    <message>
        <source>Nicht genügend Speicher</source>
        <translation>Out of memory</translation>
    </message>
    <message>
        <source>Index außerhalb des gültigen Bereichs</source>
        <translation>Subscript out of range</translation>
    </message>
    <message>
        <source>Division durch Null</source>
        <translation>Division by zero</translation>
    </message>
    <message>
        <source>Typen unverträglich</source>
        <translation>Type mismatch</translation>
    </message>
    <message>
        <source>Interner Fehler</source>
        <translation>Internal error</translation>
    </message>
    <message>
        <source>Datei nicht gefunden</source>
        <translation>File not found</translation>
    </message>
    <message>
        <source>Einlesen hinter Dateiende</source>
        <translation>Input past end of file</translation>
    </message>
    <message>
        <source>Unzulässiger Eigenschaftswert</source>
        <translation>Invalid property value</translation>
    </message>
    <message>
        <source>Anwendungs- oder objektdefinierter Fehler</source>
        <translation>Application-defined or object-defined error</translation>
    </message>
</context>
<context>
    <name>quendrix::Stacking</name>
    <message>
        <source>Vorschlag: Blende, Zerstreuungskreis und Sehfeld angeben</source>
        <translation>Suggestion: give the aperture, the circle of confusion and the field of view</translation>
    </message>
    <message>
        <source>Vorschlag: %1 Ebenen im Abstand von %2 (Schärfentiefe %3)</source>
        <translation>Suggestion: %1 planes %2 apart (depth of field %3)</translation>
    </message>
    <message>
        <source>Bereich ist kleiner als die Anzahl der Ebenen !</source>
        <translation>The range is smaller than the number of planes!</translation>
    </message>
    <message>
        <source>Bild %1 von %2</source>
        <translation>Picture %1 of %2</translation>
    </message>
    <message>
        <source>, noch etwa %1 s</source>
        <translation>, about %1 s left</translation>
    </message>
</context>
<context>
    <name>quendrix::Startup</name>
    <message>
        <source>&apos;Arduino&apos; nicht gefunden</source>
        <translation>&apos;Arduino&apos; not found</translation>
    </message>
    <message>
        <source>Unbekanntes Gerät mit Arduino an diesem Anschluß</source>
        <translation>Unknown device with an Arduino on this port</translation>
    </message>
    <message>
        <source>Motorstrom einschalten</source>
        <translation>Switch the motor power on</translation>
    </message>
    <message>
        <source>Arduino Interface kennt den Motor %1 nicht</source>
        <translation>The Arduino interface does not know motor %1</translation>
    </message>
    <message>
        <source>Arduino Interface nicht angeschlossen oder von anderem Programm verwendet</source>
        <translation>Arduino interface not connected or in use by another program</translation>
    </message>
    <message>
        <source>Interface suchen</source>
        <translation>Looking for the interface</translation>
    </message>
    <message>
        <source>Keine IP vergeben für diese Steuerung</source>
        <translation>No IP address set for this controller</translation>
    </message>
    <message>
        <source>Versorgungsspannung am Steuergerät einschalten</source>
        <translation>Switch on the controller’s power supply</translation>
    </message>
    <message>
        <source>Kommunikation starten</source>
        <translation>Starting communication</translation>
    </message>
</context>
<context>
    <name>quendrix::TypedNumber</name>
    <message>
        <source>Erwartet: eine ganze Zahl von %1 bis %2.</source>
        <translation>Expected: a whole number from %1 to %2.</translation>
    </message>
    <message>
        <source>Erwartet: eine ganze Zahl ab %1.</source>
        <translation>Expected: a whole number of at least %1.</translation>
    </message>
    <message>
        <source>Erwartet: eine ganze Zahl bis %1.</source>
        <translation>Expected: a whole number up to %1.</translation>
    </message>
    <message>
        <source>Erwartet: eine ganze Zahl.</source>
        <translation>Expected: a whole number.</translation>
    </message>
    <message>
        <source>Erwartet: eine Zahl von %1 bis %2.</source>
        <translation>Expected: a number from %1 to %2.</translation>
    </message>
    <message>
        <source>Erwartet: eine Zahl ab %1.</source>
        <translation>Expected: a number of at least %1.</translation>
    </message>
    <message>
        <source>Erwartet: eine Zahl bis %1.</source>
        <translation>Expected: a number up to %1.</translation>
    </message>
    <message>
        <source>Gelesen als %1.</source>
        <extracomment>The numbers a box&apos;s text was read as, joined by &quot; und als &quot;: &quot;Gelesen als 23 und als 23,6.&quot;</extracomment>
        <translation>Read as %1.</translation>
    </message>
    <message>
        <source> und als </source>
        <translation> and as </translation>
    </message>
    <message>
        <source>Wird so nicht angenommen.</source>
        <translation>Not accepted as it is.</translation>
    </message>
    <message>
        <source>Keine ganze Zahl.</source>
        <translation>Not a whole number.</translation>
    </message>
    <message>
        <source>Außerhalb des sinnvollen Bereichs.</source>
        <translation>Outside the sensible range.</translation>
    </message>
    <message>
        <source>Zu groß für eine Zahl.</source>
        <translation>Too large for a number.</translation>
    </message>
    <message>
        <source>Leer.</source>
        <translation>Empty.</translation>
    </message>
    <message>
        <source>Keine Zahl.</source>
        <translation>Not a number.</translation>
    </message>
    <message>
        <source>Für %1 bitte „%2“ eingeben.</source>
        <translation>For %1 type “%2”.</translation>
    </message>
</context>
</TS>
