<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de">
<context>
    <name>Actions</name>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Reload</source>
        <translation>&amp;Neu laden</translation>
    </message>
    <message>
        <source>&amp;Stop loading</source>
        <translation>Laden &amp;anhalten</translation>
    </message>
    <message>
        <source>&amp;Open in a window</source>
        <translation>In eigenem &amp;Fenster öffnen</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Copy rows</source>
        <translation>Zeilen &amp;kopieren</translation>
    </message>
    <message>
        <source>Copy job as &amp;XML</source>
        <translation>Auftrag als &amp;XML kopieren</translation>
    </message>
    <message>
        <source>Select &amp;all rows</source>
        <translation>&amp;Alle Zeilen auswählen</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>&amp;View</source>
        <translation>&amp;Ansicht</translation>
    </message>
    <message>
        <source>&amp;Columns</source>
        <translation>&amp;Spalten</translation>
    </message>
    <message>
        <source>&amp;Details</source>
        <translation>&amp;Details</translation>
    </message>
    <message>
        <source>&amp;Packets</source>
        <translation>&amp;Pakete</translation>
    </message>
    <message>
        <source>&amp;State</source>
        <translation>S&amp;tatus</translation>
    </message>
    <message>
        <source>Any state</source>
        <translation>Jeder Status</translation>
    </message>
    <message>
        <source>&amp;Theme</source>
        <translation>&amp;Erscheinungsbild</translation>
    </message>
    <message>
        <source>As the &amp;system</source>
        <translation>Wie das &amp;System</translation>
    </message>
    <message>
        <source>&amp;Light</source>
        <translation>&amp;Hell</translation>
    </message>
    <message>
        <source>&amp;Dark</source>
        <translation>&amp;Dunkel</translation>
    </message>
    <message>
        <source>Tools</source>
        <translation>Werkzeuge</translation>
    </message>
    <message>
        <source>&amp;Export…</source>
        <translation>&amp;Exportieren …</translation>
    </message>
    <message>
        <source>Export &amp;chosen rows…</source>
        <translation>Aus&amp;gewählte Zeilen exportieren …</translation>
    </message>
    <message>
        <source>&amp;Print preview…</source>
        <translation>&amp;Druckvorschau …</translation>
    </message>
</context>
<context>
    <name>Board</name>
    <message>
        <source>Loading was stopped.</source>
        <translation>Das Laden wurde angehalten.</translation>
    </message>
    <message>
        <source>The server has not answered for %1 s.</source>
        <translation>Der Server antwortet seit %1 s nicht.</translation>
    </message>
    <message>
        <source>Loading failed: %1</source>
        <translation>Laden fehlgeschlagen: %1</translation>
    </message>
    <message>
        <source>The chosen job is not shown: %1</source>
        <translation>Der gewählte Auftrag wird nicht angezeigt: %1</translation>
    </message>
</context>
<context>
    <name>DataOut</name>
    <message>
        <source>Page %1 of %2</source>
        <translation>Seite %1 von %2</translation>
    </message>
    <message>
        <source>a text has a character that XML does not allow</source>
        <translation>ein Text enthält ein Zeichen, das in XML nicht erlaubt ist</translation>
    </message>
</context>
<context>
    <name>DetailPane</name>
    <message>
        <source>Details of the job</source>
        <translation>Details des Auftrags</translation>
    </message>
    <message>
        <source>Field</source>
        <translation>Feld</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
</context>
<context>
    <name>Field</name>
    <message>
        <source>Waiting</source>
        <translation>Wartend</translation>
    </message>
    <message>
        <source>In progress</source>
        <translation>In Arbeit</translation>
    </message>
    <message>
        <source>Done</source>
        <translation>Fertig</translation>
    </message>
    <message>
        <source>trapped</source>
        <translation>überfüllt</translation>
    </message>
    <message>
        <source>overprinted</source>
        <translation>überdruckt</translation>
    </message>
    <message>
        <source>proofed</source>
        <translation>geprooft</translation>
    </message>
    <message>
        <source>monitor</source>
        <translation>Monitor</translation>
    </message>
    <message>
        <source>printer</source>
        <translation>Drucker</translation>
    </message>
    <message>
        <source>scanner</source>
        <translation>Scanner</translation>
    </message>
    <message>
        <source>colour space</source>
        <translation>Farbraum</translation>
    </message>
    <message>
        <source>abstract</source>
        <translation>abstrakt</translation>
    </message>
    <message>
        <source>link</source>
        <translation>DeviceLink</translation>
    </message>
    <message>
        <source>none</source>
        <translation>keine</translation>
    </message>
    <message>
        <source>not in this store</source>
        <translation>nicht in diesem Datenbestand</translation>
    </message>
    <message>
        <source>Field %1</source>
        <translation>Feld %1</translation>
    </message>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Technology</source>
        <translation>Technik</translation>
    </message>
    <message>
        <source>Resolution (dpi)</source>
        <translation>Auflösung (dpi)</translation>
    </message>
    <message>
        <source>Width (pt)</source>
        <translation>Breite (pt)</translation>
    </message>
    <message>
        <source>Height (pt)</source>
        <translation>Höhe (pt)</translation>
    </message>
    <message>
        <source>Colours</source>
        <translation>Farben</translation>
    </message>
    <message>
        <source>Rulings (lpi)</source>
        <translation>Rasterweiten (lpi)</translation>
    </message>
    <message>
        <source>Location</source>
        <translation>Standort</translation>
    </message>
    <message>
        <source>Installed</source>
        <translation>In Betrieb seit</translation>
    </message>
    <message>
        <source>Output</source>
        <translation>Ausgabe</translation>
    </message>
    <message>
        <source>Book</source>
        <translation>Buch</translation>
    </message>
    <message>
        <source>ICC profile</source>
        <translation>ICC-Profil</translation>
    </message>
    <message>
        <source>Publication</source>
        <translation>Publikation</translation>
    </message>
    <message>
        <source>Page</source>
        <translation>Seite</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Status</translation>
    </message>
    <message>
        <source>Priority</source>
        <translation>Priorität</translation>
    </message>
    <message>
        <source>Copies</source>
        <translation>Auflage</translation>
    </message>
    <message>
        <source>Trim box (pt)</source>
        <translation>Endformat (pt)</translation>
    </message>
    <message>
        <source>Bleed (mm)</source>
        <translation>Anschnitt (mm)</translation>
    </message>
    <message>
        <source>Coverage (%)</source>
        <translation>Farbdeckung (%)</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>Created</source>
        <translation>Angelegt</translation>
    </message>
    <message>
        <source>Remark</source>
        <translation>Bemerkung</translation>
    </message>
    <message>
        <source>Proofing profile</source>
        <translation>Proofprofil</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Device class</source>
        <translation>Geräteklasse</translation>
    </message>
    <message>
        <source>Colour space</source>
        <translation>Farbraum</translation>
    </message>
    <message>
        <source>Version</source>
        <translation>Version</translation>
    </message>
    <message>
        <source>Size (bytes)</source>
        <translation>Größe (Byte)</translation>
    </message>
    <message>
        <source>Data</source>
        <translation>Daten</translation>
    </message>
    <message>
        <source>City</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Country</source>
        <translation>Land</translation>
    </message>
    <message>
        <source>Founded</source>
        <translation>Gegründet</translation>
    </message>
    <message>
        <source>Title</source>
        <translation>Titel</translation>
    </message>
    <message>
        <source>Author</source>
        <translation>Autor</translation>
    </message>
    <message>
        <source>Owner</source>
        <translation>Inhaber</translation>
    </message>
    <message>
        <source>Pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>First published</source>
        <translation>Erstausgabe</translation>
    </message>
    <message>
        <source>Language</source>
        <translation>Sprache</translation>
    </message>
    <message>
        <source>Page size (mm)</source>
        <translation>Seitenformat (mm)</translation>
    </message>
    <message>
        <source>Subjects</source>
        <translation>Themen</translation>
    </message>
</context>
<context>
    <name>ItemAgent</name>
    <message>
        <source>it is not in the store any more</source>
        <translation>er ist nicht mehr im Datenbestand</translation>
    </message>
</context>
<context>
    <name>JobModel</name>
    <message>
        <source>Job</source>
        <translation>Auftrag</translation>
    </message>
</context>
<context>
    <name>JobTable</name>
    <message>
        <source>Jobs</source>
        <translation>Aufträge</translation>
    </message>
</context>
<context>
    <name>JobWindow</name>
    <message>
        <source>The job is being read.</source>
        <translation>Der Auftrag wird gelesen.</translation>
    </message>
</context>
<context>
    <name>MainWindow</name>
    <message>
        <source>Job board</source>
        <translation>Auftragstafel</translation>
    </message>
    <message>
        <source>Find jobs</source>
        <translation>Aufträge suchen</translation>
    </message>
    <message>
        <source>Find jobs by any column</source>
        <translation>Aufträge in allen Spalten suchen</translation>
    </message>
    <message>
        <source>The job is being read.</source>
        <translation>Der Auftrag wird gelesen.</translation>
    </message>
    <message>
        <source>No job is chosen.</source>
        <translation>Kein Auftrag ist ausgewählt.</translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>Any state</source>
        <translation>Jeder Status</translation>
    </message>
    <message>
        <source>Jobs are being loaded.</source>
        <translation>Die Aufträge werden geladen.</translation>
    </message>
    <message>
        <source>No jobs are loaded.</source>
        <translation>Es sind keine Aufträge geladen.</translation>
    </message>
    <message>
        <source>The store has no jobs.</source>
        <translation>Im Datenbestand sind keine Aufträge.</translation>
    </message>
    <message>
        <source>No job contains “%1”.</source>
        <translation>Kein Auftrag enthält „%1“.</translation>
    </message>
    <message>
        <source>No job is in this state.</source>
        <translation>Kein Auftrag hat diesen Status.</translation>
    </message>
    <message>
        <source>There are no jobs here.</source>
        <translation>Hier gibt es keine Aufträge.</translation>
    </message>
    <message>
        <source>Comma-separated values (*.csv)</source>
        <translation>Durch Kommas getrennte Werte (*.csv)</translation>
    </message>
    <message>
        <source>XML (*.xml)</source>
        <translation>XML (*.xml)</translation>
    </message>
    <message>
        <source>Export jobs</source>
        <translation>Aufträge exportieren</translation>
    </message>
    <message>
        <source>%1 could not be written: %2</source>
        <translation>%1 konnte nicht geschrieben werden: %2</translation>
    </message>
</context>
<context>
    <name>Reader</name>
    <message>
        <source>Server bridge</source>
        <translation>Server-Brücke</translation>
    </message>
    <message>
        <source>outputs</source>
        <translation>Ausgaben</translation>
    </message>
    <message>
        <source>jobs on %1</source>
        <translation>Aufträge auf %1</translation>
    </message>
    <message>
        <source>a reply cannot be read</source>
        <translation>eine Antwort ist nicht lesbar</translation>
    </message>
    <message>
        <source>books</source>
        <translation>Bücher</translation>
    </message>
    <message>
        <source>Job list</source>
        <translation>Auftragsliste</translation>
    </message>
    <message>
        <source>Items</source>
        <translation>Objekte</translation>
    </message>
</context>
<context>
    <name>SourceModel</name>
    <message>
        <source>All jobs</source>
        <translation>Alle Aufträge</translation>
    </message>
    <message>
        <source>Outputs</source>
        <translation>Ausgaben</translation>
    </message>
    <message>
        <source>Publications</source>
        <translation>Publikationen</translation>
    </message>
    <message>
        <source>Books</source>
        <translation>Bücher</translation>
    </message>
    <message>
        <source>Jobs of</source>
        <translation>Aufträge von</translation>
    </message>
    <message>
        <source>Jobs</source>
        <translation>Aufträge</translation>
    </message>
</context>
<context>
    <name>SourceTree</name>
    <message>
        <source>Outputs, publications and books</source>
        <translation>Ausgaben, Publikationen und Bücher</translation>
    </message>
</context>
<context>
    <name>StatusLine</name>
    <message>
        <source>Loading</source>
        <translation>Laden</translation>
    </message>
    <message>
        <source>%1 of %2 jobs that are loaded so far</source>
        <translation>%1 von %2 bisher geladenen Aufträgen</translation>
    </message>
    <message>
        <source>%1 of %2 jobs</source>
        <translation>%1 von %2 Aufträgen</translation>
    </message>
    <message>
        <source>not all jobs are loaded</source>
        <translation>nicht alle Aufträge sind geladen</translation>
    </message>
    <message>
        <source>as of %1</source>
        <translation>Stand %1</translation>
    </message>
    <message>
        <source>as of %1, %2 min ago</source>
        <translation>Stand %1, vor %2 min</translation>
    </message>
    <message>
        <source>updated %1</source>
        <translation>aktualisiert %1</translation>
    </message>
</context>
<context>
    <name>TQXmlInternal::PacketModel</name>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>To</source>
        <translation>An</translation>
    </message>
    <message>
        <source>Content</source>
        <translation>Inhalt</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>What became of it</source>
        <translation>Verbleib</translation>
    </message>
    <message>
        <source>waiting</source>
        <translation>wartet</translation>
    </message>
    <message>
        <source>delivered after %1</source>
        <translation>zugestellt nach %1</translation>
    </message>
    <message>
        <source>lost: there is no such agent</source>
        <translation>verloren: diesen Agenten gibt es nicht</translation>
    </message>
    <message>
        <source>dropped: its source is not registered</source>
        <translation>verworfen: Absender nicht angemeldet</translation>
    </message>
    <message>
        <source>dropped: equals the one queued last</source>
        <translation>verworfen: gleicht dem zuletzt eingereihten</translation>
    </message>
    <message>
        <source>dropped: is queued already</source>
        <translation>verworfen: schon eingereiht</translation>
    </message>
    <message>
        <source>agent of type %1 added</source>
        <translation>Agent vom Typ %1 angemeldet</translation>
    </message>
    <message>
        <source>agent of type %1 removed</source>
        <translation>Agent vom Typ %1 abgemeldet</translation>
    </message>
    <message>
        <source>agent of type %1 supplied</source>
        <translation>Agent vom Typ %1 bereitgestellt</translation>
    </message>
    <message>
        <source>reply after %1</source>
        <translation>Antwort nach %1</translation>
    </message>
    <message>
        <source>answered after %1</source>
        <translation>beantwortet nach %1</translation>
    </message>
</context>
<context>
    <name>TroubleBar</name>
    <message>
        <source>Re&amp;try</source>
        <translation>&amp;Erneut versuchen</translation>
    </message>
</context>
<context>
    <name>XMLMonitor</name>
    <message>
        <source>This is not a file of packets.</source>
        <translation>Das ist keine Paketdatei.</translation>
    </message>
    <message>
        <source>The file is damaged, line %1: %2</source>
        <translation>Die Datei ist beschädigt, Zeile %1: %2</translation>
    </message>
    <message>
        <source>attribute %1 is no such number</source>
        <translation>Attribut %1 ist keine gültige Zahl</translation>
    </message>
    <message>
        <source>attribute %1 is no state</source>
        <translation>Attribut %1 ist kein Zustand</translation>
    </message>
    <message>
        <source>The file is too large.</source>
        <translation>Die Datei ist zu groß.</translation>
    </message>
    <message>
        <source>server bridge</source>
        <translation>Server-Brücke</translation>
    </message>
    <message>
        <source>agent %1</source>
        <translation>Agent %1</translation>
    </message>
    <message>
        <source>action %1</source>
        <translation>Aktion %1</translation>
    </message>
    <message>
        <source>page %1</source>
        <translation>Seite %1</translation>
    </message>
    <message>
        <source>image %1</source>
        <translation>Bild %1</translation>
    </message>
    <message>
        <source>message %1</source>
        <translation>Meldung %1</translation>
    </message>
    <message>
        <source>at least %1 items</source>
        <translation>mindestens %1 Datensätze</translation>
    </message>
    <message>
        <source>1 item</source>
        <translation>1 Datensatz</translation>
    </message>
    <message>
        <source>%1 items</source>
        <translation>%1 Datensätze</translation>
    </message>
    <message>
        <source>empty</source>
        <translation>leer</translation>
    </message>
    <message>
        <source>(too many at once to keep the text)</source>
        <translation>(zu viele auf einmal, um den Text zu behalten)</translation>
    </message>
    <message>
        <source>everything</source>
        <translation>alles</translation>
    </message>
    <message>
        <source>actions</source>
        <translation>Aktionen</translation>
    </message>
    <message>
        <source>items</source>
        <translation>Datensätze</translation>
    </message>
    <message>
        <source>pages</source>
        <translation>Seiten</translation>
    </message>
    <message>
        <source>messages</source>
        <translation>Meldungen</translation>
    </message>
    <message>
        <source>images</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>not delivered</source>
        <translation>nicht zugestellt</translation>
    </message>
    <message>
        <source>agents</source>
        <translation>Agenten</translation>
    </message>
    <message>
        <source>Packets</source>
        <translation>Pakete</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Follow</source>
        <translation>Mitlaufen</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Open…</source>
        <translation>Öffnen …</translation>
    </message>
    <message>
        <source>Save…</source>
        <translation>Speichern …</translation>
    </message>
    <message>
        <source>Copy as XML</source>
        <translation>Als XML kopieren</translation>
    </message>
    <message>
        <source>Request ↔ reply</source>
        <translation>Anfrage ↔ Antwort</translation>
    </message>
    <message>
        <source>&amp;Agent</source>
        <translation>&amp;Agent</translation>
    </message>
    <message>
        <source>&amp;Kind</source>
        <translation>A&amp;rt</translation>
    </message>
    <message>
        <source>Te&amp;xt</source>
        <translation>Te&amp;xt</translation>
    </message>
    <message>
        <source>&amp;Find</source>
        <translation>&amp;Suchen</translation>
    </message>
    <message>
        <source>Text of the chosen packet</source>
        <translation>Text des gewählten Pakets</translation>
    </message>
    <message>
        <source>Choose a packet to read it.</source>
        <translation>Zum Lesen ein Paket auswählen.</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Nächstes</translation>
    </message>
    <message>
        <source>Previous</source>
        <translation>Voriges</translation>
    </message>
    <message>
        <source>Fold items</source>
        <translation>Datensätze einklappen</translation>
    </message>
    <message>
        <source>Unfold</source>
        <translation>Ausklappen</translation>
    </message>
    <message>
        <source>
… and %1 more</source>
        <translation>
… und weitere %1</translation>
    </message>
    <message>
        <source>“%1” is not in this packet</source>
        <translation>„%1“ kommt in diesem Paket nicht vor</translation>
    </message>
    <message>
        <source>Save packets</source>
        <translation>Pakete speichern</translation>
    </message>
    <message>
        <source>Packets (*.tqpackets)</source>
        <translation>Pakete (*.tqpackets)</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>Open packets</source>
        <translation>Pakete öffnen</translation>
    </message>
    <message>
        <source>%1 of %2 lines</source>
        <translation>%1 von %2 Zeilen</translation>
    </message>
    <message>
        <source>%1 lines</source>
        <translation>%1 Zeilen</translation>
    </message>
    <message>
        <source>paused, %1 not recorded</source>
        <translation>angehalten, %1 nicht aufgezeichnet</translation>
    </message>
    <message>
        <source>%1 older ones dropped</source>
        <translation>%1 ältere verworfen</translation>
    </message>
    <message>
        <source>%1 without text: too many at once</source>
        <translation>%1 ohne Text: zu viele auf einmal</translation>
    </message>
    <message>
        <source>More tools</source>
        <translation>Weitere Werkzeuge</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Shows the jobs of a print shop.</source>
        <translation>Zeigt die Aufträge einer Druckerei.</translation>
    </message>
    <message>
        <source>The store: its path, sqlite:PATH or postgresql://USER@HOST:PORT/DB; by default what TQXML_DATABASE names, or the sample, in memory.</source>
        <translation>Der Datenbestand: sein Pfad, sqlite:PFAD oder postgresql://BENUTZER@RECHNER:PORT/DB; ohne Angabe der von TQXML_DATABASE benannte oder das Beispiel, im Arbeitsspeicher.</translation>
    </message>
    <message>
        <source>DATABASE</source>
        <translation>DATENBANK</translation>
    </message>
    <message>
        <source>jobboard: only options are taken; a store is named by --database</source>
        <translation>jobboard: nur Optionen sind erlaubt; --database nennt den Datenbestand</translation>
    </message>
</context>
</TS>
