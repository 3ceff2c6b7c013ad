<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>Captures</name>
    <message>
        <source>written</source>
        <translation>geschrieben</translation>
    </message>
</context>
<context>
    <name>Drivers</name>
    <message>
        <source>%1 could not be copied to %2, where it is loaded a second time: is there room?</source>
        <translation>%1 konnte nicht nach %2 kopiert werden, wo es ein zweites Mal geladen wird: Ist dort Platz?</translation>
    </message>
</context>
<context>
    <name>Frames</name>
    <message>
        <source>read bits</source>
        <translation>Bits lesen</translation>
    </message>
    <message>
        <source>read registers</source>
        <translation>Register lesen</translation>
    </message>
    <message>
        <source>write one bit</source>
        <translation>ein Bit schreiben</translation>
    </message>
    <message>
        <source>write registers</source>
        <translation>Register schreiben</translation>
    </message>
    <message>
        <source>unknown on this line</source>
        <translation>auf dieser Leitung unbekannt</translation>
    </message>
    <message>
        <source>too much</source>
        <translation>zu viel</translation>
    </message>
    <message>
        <source>nothing is expected here</source>
        <translation>hier wird nichts erwartet</translation>
    </message>
    <message>
        <source>station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>all stations</source>
        <translation>alle Stationen</translation>
    </message>
    <message>
        <source>station %1</source>
        <translation>Station %1</translation>
    </message>
    <message>
        <source>function</source>
        <translation>Funktion</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is refused</source>
        <translation>„%1“ wird abgelehnt</translation>
    </message>
    <message>
        <source>exception</source>
        <translation>Ausnahme</translation>
    </message>
    <message>
        <source>address</source>
        <translation>Adresse</translation>
    </message>
    <message>
        <source>no area lies there</source>
        <translation>dort liegt kein Bereich</translation>
    </message>
    <message>
        <source>value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>on</source>
        <translation>ein</translation>
    </message>
    <message>
        <source>off</source>
        <translation>aus</translation>
    </message>
    <message>
        <source>neither on nor off</source>
        <translation>weder ein noch aus</translation>
    </message>
    <message>
        <source>quantity</source>
        <translation>Anzahl</translation>
    </message>
    <message>
        <source>bits</source>
        <translation>Bits</translation>
    </message>
    <message>
        <source>bytes of data</source>
        <translation>Datenbytes</translation>
    </message>
    <message>
        <source>%1, but %2 follow</source>
        <translation>%1, aber es folgen %2</translation>
    </message>
    <message>
        <source>from %1 on: all off</source>
        <translation>ab %1: alle aus</translation>
    </message>
    <message>
        <source>from %1 on: %2 on</source>
        <translation>ab %1: %2 ein</translation>
    </message>
    <message>
        <source>%1 = %2; 100 − %3 = %4</source>
        <translation>%1 = %2; 100 − %3 = %4</translation>
    </message>
    <message>
        <source>LRC</source>
        <translation>LRC</translation>
    </message>
    <message>
        <source>right: </source>
        <translation>richtig: </translation>
    </message>
    <message>
        <source>wrong: </source>
        <translation>falsch: </translation>
    </message>
    <message>
        <source>no frame</source>
        <translation>kein Telegramm</translation>
    </message>
    <message>
        <source>start</source>
        <translation>Anfang</translation>
    </message>
    <message>
        <source>end</source>
        <translation>Ende</translation>
    </message>
</context>
<context>
    <name>Groups</name>
    <message>
        <source>others</source>
        <translation>übrige</translation>
    </message>
    <message>
        <source>Station %1</source>
        <translation>Station %1</translation>
    </message>
</context>
<context>
    <name>Outcomes</name>
    <message>
        <source>the line was lost, or the program was ended</source>
        <translation>die Leitung ging verloren, oder das Programm wurde beendet</translation>
    </message>
    <message>
        <source>done</source>
        <translation>erledigt</translation>
    </message>
    <message>
        <source>refused</source>
        <translation>abgelehnt</translation>
    </message>
    <message>
        <source>no answer</source>
        <translation>keine Antwort</translation>
    </message>
    <message>
        <source>not sent</source>
        <translation>nicht gesendet</translation>
    </message>
    <message>
        <source>unknown</source>
        <translation>unbekannt</translation>
    </message>
    <message>
        <source>Written: the controller has confirmed it.</source>
        <translation>Geschrieben: Die Steuerung hat es bestätigt.</translation>
    </message>
    <message>
        <source>Not written: %1.</source>
        <translation>Nicht geschrieben: %1.</translation>
    </message>
    <message>
        <source>Not confirmed: %1. It may have been written all the same.</source>
        <translation>Nicht bestätigt: %1. Es kann trotzdem geschrieben worden sein.</translation>
    </message>
    <message>
        <source>Not written, because it was not sent: %1.</source>
        <translation>Nicht geschrieben, weil es nicht gesendet wurde: %1.</translation>
    </message>
    <message>
        <source>Unknown whether it was written: %1.</source>
        <translation>Unbekannt, ob es geschrieben wurde: %1.</translation>
    </message>
    <message>
        <source>It stopped at %1; what precedes it was written.</source>
        <translation>Es endete bei %1; was davor liegt, wurde geschrieben.</translation>
    </message>
</context>
<context>
    <name>Recordings</name>
    <message>
        <source>%1 is not a recording: %2; expected what &apos;kmr log&apos; writes</source>
        <translation>%1 ist keine Aufzeichnung: %2; erwartet wird, was „kmr log“ schreibt</translation>
    </message>
    <message>
        <source>its heading is not time,TAG,TAG quality,...</source>
        <translation>die Kopfzeile ist nicht time,TAG,TAG quality,...</translation>
    </message>
    <message>
        <source>column %1 is not a quality</source>
        <translation>Spalte %1 ist keine Qualität</translation>
    </message>
    <message>
        <source>line %1 is not a row</source>
        <translation>Zeile %1 ist kein Datensatz</translation>
    </message>
    <message>
        <source>it has no row</source>
        <translation>sie hat keinen Datensatz</translation>
    </message>
</context>
<context>
    <name>kmr::LineThread</name>
    <message>
        <source>The station answers, but late: not within %1 ms, but within %2 ms.</source>
        <translation>Die Station antwortet, aber spät: nicht innerhalb von %1 ms, wohl aber innerhalb von %2 ms.</translation>
    </message>
    <message>
        <source>Nothing was transferred: the line is not open.</source>
        <translation>Es wurde nichts übertragen: Die Leitung ist nicht offen.</translation>
    </message>
    <message>
        <source>The line is examined.</source>
        <translation>Die Leitung wird untersucht.</translation>
    </message>
    <message>
        <source>The line was lost; it is opened again.</source>
        <translation>Die Leitung ging verloren; sie wird wieder geöffnet.</translation>
    </message>
    <message>
        <source>it is not polled</source>
        <translation>sie wird nicht abgefragt</translation>
    </message>
    <message>
        <source>the line was lost</source>
        <translation>die Leitung ging verloren</translation>
    </message>
</context>
<context>
    <name>kmr::LineView</name>
    <message>
        <source>never answered</source>
        <translation>hat nie geantwortet</translation>
    </message>
    <message>
        <source>silent for %1 s</source>
        <translation>seit %1 s stumm</translation>
    </message>
    <message>
        <source>limps: %1 % answered</source>
        <translation>lahmt: %1 % beantwortet</translation>
    </message>
    <message>
        <source>good</source>
        <translation>gut</translation>
    </message>
    <message>
        <source>Station %1 %2</source>
        <translation>Station %1 %2</translation>
    </message>
    <message>
        <source>&amp;Examine the line</source>
        <translation>Leitung unter&amp;suchen</translation>
    </message>
    <message>
        <source>An examination asks the first tag&apos;s station three times and says what is wrong and what to do. Polling waits meanwhile.</source>
        <translation>Eine Untersuchung fragt die Station der ersten Variablen dreimal und sagt, was nicht stimmt und was zu tun ist. Das Abfragen wartet solange.</translation>
    </message>
    <message>
        <source>Round trips (ms): how often</source>
        <translation>Antwortzeiten (ms): wie oft</translation>
    </message>
    <message>
        <source>ms</source>
        <translation>ms</translation>
    </message>
    <message>
        <source>Round trips over time (ms)</source>
        <translation>Antwortzeiten im Verlauf (ms)</translation>
    </message>
    <message>
        <source>Failed attempts a second</source>
        <translation>Fehlversuche je Sekunde</translation>
    </message>
    <message>
        <source>Stations</source>
        <translation>Stationen</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>Answered</source>
        <translation>Beantwortet</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Fehlversuche</translation>
    </message>
    <message>
        <source>Mean ms</source>
        <translation>Mittel ms</translation>
    </message>
    <message>
        <source>Longest ms</source>
        <translation>Längste ms</translation>
    </message>
    <message>
        <source>Examining…</source>
        <translation>Wird untersucht…</translation>
    </message>
    <message>
        <source>mean</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>longest</source>
        <translation>längste</translation>
    </message>
    <message>
        <source>no answer</source>
        <translation>keine Antwort</translation>
    </message>
    <message>
        <source>bad answer</source>
        <translation>falsche Antwort</translation>
    </message>
    <message>
        <source>refused</source>
        <translation>abgelehnt</translation>
    </message>
    <message>
        <source>%1 requests a second</source>
        <translation>%1 Anfragen je Sekunde</translation>
    </message>
    <message>
        <source>, %1 % of the wire&apos;s time in use</source>
        <translation>, %1 % der Leitungszeit belegt</translation>
    </message>
    <message>
        <source>The examination was stopped before the line was known.</source>
        <translation>Die Untersuchung endete, bevor die Leitung bekannt war.</translation>
    </message>
    <message>
        <source>That was three requests. But: %1. Check plugs, shield and terminators, and that no two controllers have the same station number.</source>
        <translation>Das waren drei Anfragen. Aber: %1. Stecker, Schirm und Abschlusswiderstände prüfen, und ob zwei Steuerungen dieselbe Stationsnummer haben.</translation>
    </message>
</context>
<context>
    <name>kmr::MainWindow</name>
    <message>
        <source>State of the line</source>
        <translation>Zustand der Leitung</translation>
    </message>
    <message>
        <source>Show the line</source>
        <translation>Leitung zeigen</translation>
    </message>
    <message>
        <source>These names and tags can&apos;t be read and are left out:
%1</source>
        <translation>Diese Namen und Variablen können nicht gelesen werden und fehlen:
%1</translation>
    </message>
    <message>
        <source>simulated controller</source>
        <translation>simulierte Steuerung</translation>
    </message>
    <message>
        <source>%1: open</source>
        <translation>%1: offen</translation>
    </message>
    <message>
        <source>%1: opening…</source>
        <translation>%1: wird geöffnet…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>%1: closed</source>
        <translation>%1: geschlossen</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About kmr-view</source>
        <translation>Ü&amp;ber kmr-view</translation>
    </message>
    <message>
        <source>About kmr-view</source>
        <translation>Über kmr-view</translation>
    </message>
    <message>
        <source>kmr-view %1, the window on a line of Ostrel KMR controllers.</source>
        <translation>kmr-view %1, das Fenster auf eine Leitung mit Ostrel-KMR-Steuerungen.</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;New line…</source>
        <translation>&amp;Neue Leitung…</translation>
    </message>
    <message>
        <source>&amp;Open project…</source>
        <translation>Projekt ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>Open &amp;recording or capture…</source>
        <translation>&amp;Aufzeichnung oder Mitschnitt öffnen…</translation>
    </message>
    <message>
        <source>&amp;Save project</source>
        <translation>Projekt &amp;speichern</translation>
    </message>
    <message>
        <source>Save project &amp;as…</source>
        <translation>Projekt speichern &amp;unter…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>Open project</source>
        <translation>Projekt öffnen</translation>
    </message>
    <message>
        <source>Projects (*.toml);;All files (*)</source>
        <translation>Projekte (*.toml);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>T&amp;raffic</source>
        <translation>Ver&amp;kehr</translation>
    </message>
    <message>
        <source>&amp;Line</source>
        <translation>&amp;Leitung</translation>
    </message>
    <message>
        <source>&amp;Plan</source>
        <translation>&amp;Plan</translation>
    </message>
    <message>
        <source>%1, of %2</source>
        <translation>%1, von %2</translation>
    </message>
    <message>
        <source>%1: trends</source>
        <translation>%1: Verläufe</translation>
    </message>
    <message>
        <source>Save the tags of this line as a project?</source>
        <translation>Die Variablen dieser Leitung als Projekt speichern?</translation>
    </message>
    <message>
        <source>Save the changes to %1?</source>
        <translation>Die Änderungen in %1 speichern?</translation>
    </message>
    <message>
        <source>The tags in %1 were changed while it was open here. Replace them with the tags of this window?</source>
        <translation>Die Variablen in %1 wurden geändert, während die Datei hier offen war. Durch die Variablen dieses Fensters ersetzen?</translation>
    </message>
    <message>
        <source>Save project as</source>
        <translation>Projekt speichern unter</translation>
    </message>
    <message>
        <source>Projects (*.toml)</source>
        <translation>Projekte (*.toml)</translation>
    </message>
    <message>
        <source>%1[*] – kmr-view</source>
        <translation>%1[*] – kmr-view</translation>
    </message>
    <message>
        <source>New line</source>
        <translation>Neue Leitung</translation>
    </message>
    <message>
        <source>Open recipe</source>
        <translation>Rezept öffnen</translation>
    </message>
    <message>
        <source>Recipes (*.csv);;All files (*)</source>
        <translation>Rezepte (*.csv);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>The download of a recipe stopped at %1; %2 of %3 requests were answered for certain.</source>
        <translation>Das Schreiben eines Rezepts endete bei %1; %2 von %3 Anfragen wurden sicher beantwortet.</translation>
    </message>
    <message>
        <source>%1 = %2</source>
        <translation>%1 = %2</translation>
    </message>
    <message>
        <source>The window was closed during a write.
%1</source>
        <translation>Das Fenster wurde während eines Schreibens geschlossen.
%1</translation>
    </message>
    <message>
        <source>Open recording or capture</source>
        <translation>Aufzeichnung oder Mitschnitt öffnen</translation>
    </message>
    <message>
        <source>Recordings and captures (*.csv *.sqlite *.sqlite3 *.db *.kmr);;All files (*)</source>
        <translation>Aufzeichnungen und Mitschnitte (*.csv *.sqlite *.sqlite3 *.db *.kmr);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Open re&amp;cent</source>
        <translation>&amp;Zuletzt geöffnet</translation>
    </message>
    <message>
        <source>C&amp;lose page</source>
        <translation>Seite s&amp;chließen</translation>
    </message>
    <message>
        <source>Rec&amp;ipes</source>
        <translation>&amp;Rezepte</translation>
    </message>
    <message>
        <source>Tre&amp;nds</source>
        <translation>Verlä&amp;ufe</translation>
    </message>
    <message>
        <source>The line was closed during a write.
%1</source>
        <translation>Die Leitung wurde während eines Schreibens geschlossen.
%1</translation>
    </message>
    <message>
        <source>%1 is not opened: a recipe is being transferred.</source>
        <translation>%1 wird nicht geöffnet: Ein Rezept wird gerade übertragen.</translation>
    </message>
</context>
<context>
    <name>kmr::PlanView</name>
    <message>
        <source>nothing of %1</source>
        <translation>nichts von %1</translation>
    </message>
    <message>
        <source>%1 to %2</source>
        <translation>%1 bis %2</translation>
    </message>
    <message>
        <source>answers are kept in &amp;step</source>
        <translation>Antworten bleiben im &amp;Takt</translation>
    </message>
    <message>
        <source>Requests of the poll plan</source>
        <translation>Anfragen des Abfrageplans</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Elements</source>
        <translation>Elemente</translation>
    </message>
    <message>
        <source>Map</source>
        <translation>Karte</translation>
    </message>
    <message>
        <source>Not asked for</source>
        <translation>Nicht verlangt</translation>
    </message>
    <message>
        <source>Characters</source>
        <translation>Zeichen</translation>
    </message>
    <message>
        <source>Wire ms</source>
        <translation>Leitung ms</translation>
    </message>
    <message>
        <source>Map: a full cell is asked for, a hatched one is only read along.</source>
        <translation>Karte: Ein volles Feld ist verlangt, ein schraffiertes wird nur mitgelesen.</translation>
    </message>
    <message>
        <source>What if: bits a second</source>
        <translation>Was wäre wenn: Bits je Sekunde</translation>
    </message>
    <message>
        <source>What if: words of one request</source>
        <translation>Was wäre wenn: Wörter einer Anfrage</translation>
    </message>
    <message>
        <source>What if: one more tag</source>
        <translation>Was wäre wenn: eine weitere Variable</translation>
    </message>
    <message>
        <source>one more tag</source>
        <translation>eine weitere Variable</translation>
    </message>
    <message>
        <source>What if:</source>
        <translation>Was wäre wenn:</translation>
    </message>
    <message>
        <source>baud,</source>
        <translation>Baud,</translation>
    </message>
    <message>
        <source>words a request,</source>
        <translation>Wörter je Anfrage,</translation>
    </message>
    <message>
        <source>No tags, no plan.</source>
        <translation>Ohne Variablen kein Plan.</translation>
    </message>
    <message>
        <source>%1 requests, %2 characters, %3 ms a cycle</source>
        <translation>%1 Anfragen, %2 Zeichen, %3 ms je Umlauf</translation>
    </message>
    <message>
        <source>As it is: %1.</source>
        <translation>Wie es ist: %1.</translation>
    </message>
    <message>
        <source>As it is: %1.
What if: %2.</source>
        <translation>Wie es ist: %1.
Was wäre wenn: %2.</translation>
    </message>
    <message numerus="yes">
        <source>A host that passes these tags as they are typed never reads %n element(s) correctly; this window does. Mark &quot;tags as typed&quot; to see which.</source>
        <translation>
            <numerusform>Ein Host, der diese Variablen wie eingegeben übergibt, liest %n Element nie richtig; dieses Fenster schon. „Variablen wie eingegeben“ zeigt, welches.</numerusform>
            <numerusform>Ein Host, der diese Variablen wie eingegeben übergibt, liest %n Elemente nie richtig; dieses Fenster schon. „Variablen wie eingegeben“ zeigt, welche.</numerusform>
        </translation>
    </message>
    <message>
        <source>%1
not asked for: %2</source>
        <translation>%1
nicht verlangt: %2</translation>
    </message>
    <message>
        <source>tags as t&amp;yped, as another host may pass them to the driver</source>
        <translation>Variablen wie eingegeben, so wie ein anderer Host sie dem Tr&amp;eiber geben mag</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <translation>%1: %2</translation>
    </message>
</context>
<context>
    <name>kmr::ReadingPage</name>
    <message>
        <source>Share of the file that is read</source>
        <translation>Gelesener Teil der Datei</translation>
    </message>
    <message>
        <source>&amp;Cancel</source>
        <translation>Abbre&amp;chen</translation>
    </message>
    <message>
        <source>Reading %1…</source>
        <translation>%1 wird gelesen …</translation>
    </message>
</context>
<context>
    <name>kmr::RecipeView</name>
    <message>
        <source>written</source>
        <translation>geschrieben</translation>
    </message>
    <message>
        <source>written in part</source>
        <translation>teilweise geschrieben</translation>
    </message>
    <message>
        <source>unknown whether written</source>
        <translation>unbekannt, ob geschrieben</translation>
    </message>
    <message>
        <source>not written</source>
        <translation>nicht geschrieben</translation>
    </message>
    <message>
        <source>No recipe is open.</source>
        <translation>Es ist kein Rezept offen.</translation>
    </message>
    <message>
        <source>Progress of the transfer</source>
        <translation>Fortschritt der Übertragung</translation>
    </message>
    <message>
        <source>Entries of the recipe</source>
        <translation>Einträge des Rezepts</translation>
    </message>
    <message>
        <source>Tag</source>
        <translation>Variable</translation>
    </message>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>Controller</source>
        <translation>Steuerung</translation>
    </message>
    <message>
        <source>State</source>
        <translation>Zustand</translation>
    </message>
    <message>
        <source>&amp;Open recipe…</source>
        <translation>Rezept ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>&amp;Compare</source>
        <translation>Ver&amp;gleichen</translation>
    </message>
    <message>
        <source>Read the controller&apos;s values beside those of the file</source>
        <translation>Die Werte der Steuerung neben denen der Datei lesen</translation>
    </message>
    <message>
        <source>&amp;Download</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>Write the file&apos;s values to the controller</source>
        <translation>Die Werte der Datei in die Steuerung schreiben</translation>
    </message>
    <message>
        <source>&amp;Upload</source>
        <translation>&amp;Auslesen</translation>
    </message>
    <message>
        <source>Replace the file&apos;s values by those of the controller</source>
        <translation>Die Werte der Datei durch die der Steuerung ersetzen</translation>
    </message>
    <message numerus="yes">
        <source>%1: %n entries</source>
        <translation>
            <numerusform>%1: %n Eintrag</numerusform>
            <numerusform>%1: %n Einträge</numerusform>
        </translation>
    </message>
    <message>
        <source>Transferring…</source>
        <translation>Wird übertragen…</translation>
    </message>
    <message>
        <source>Download</source>
        <translation>Schreiben</translation>
    </message>
    <message numerus="yes">
        <source>Write %n entries of %1 to the controller?</source>
        <translation>
            <numerusform>%n Eintrag von %1 in die Steuerung schreiben?</numerusform>
            <numerusform>%n Einträge von %1 in die Steuerung schreiben?</numerusform>
        </translation>
    </message>
    <message>
        <source>&amp;Write</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>%1 requests answered</source>
        <translation>%1 Anfragen beantwortet</translation>
    </message>
    <message>
        <source>%1 of %2 requests were answered for certain.</source>
        <translation>%1 von %2 Anfragen wurden sicher beantwortet.</translation>
    </message>
    <message>
        <source>It stopped at %1: %2. %3</source>
        <translation>Es endete bei %1: %2. %3</translation>
    </message>
    <message>
        <source>equal</source>
        <translation>gleich</translation>
    </message>
    <message>
        <source>differs</source>
        <translation>verschieden</translation>
    </message>
    <message>
        <source>All entries are equal.</source>
        <translation>Alle Einträge sind gleich.</translation>
    </message>
    <message numerus="yes">
        <source>%n entries differ.</source>
        <translation>
            <numerusform>%n Eintrag ist verschieden.</numerusform>
            <numerusform>%n Einträge sind verschieden.</numerusform>
        </translation>
    </message>
    <message>
        <source>Saved in %1.</source>
        <translation>In %1 gespeichert.</translation>
    </message>
</context>
<context>
    <name>kmr::RecordingView</name>
    <message>
        <source>Show another tag</source>
        <translation>Weitere Variable zeigen</translation>
    </message>
    <message>
        <source>Show another tag…</source>
        <translation>Weitere Variable zeigen…</translation>
    </message>
</context>
<context>
    <name>kmr::StartDialog</name>
    <message>
        <source>A &amp;simulated controller, built in</source>
        <translation>Eine eingebaute, &amp;simulierte Steuerung</translation>
    </message>
    <message>
        <source>&amp;TCP connection</source>
        <translation>&amp;TCP-Verbindung</translation>
    </message>
    <message>
        <source>Serial &amp;port</source>
        <translation>Serielle S&amp;chnittstelle</translation>
    </message>
    <message>
        <source>Name or address of the host</source>
        <translation>Name oder Adresse des Rechners</translation>
    </message>
    <message>
        <source>TCP port</source>
        <translation>TCP-Port</translation>
    </message>
    <message>
        <source>Serial port</source>
        <translation>Serielle Schnittstelle</translation>
    </message>
    <message>
        <source>Bits a second</source>
        <translation>Bits je Sekunde</translation>
    </message>
    <message>
        <source>Frame format</source>
        <translation>Zeichenformat</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Tags to show</source>
        <translation>Variablen, die gezeigt werden</translation>
    </message>
    <message>
        <source>What is wrong with the link</source>
        <translation>Was an der Verbindung nicht stimmt</translation>
    </message>
    <message>
        <source>Open a line</source>
        <translation>Leitung öffnen</translation>
    </message>
    <message>
        <source>&amp;Open</source>
        <translation>Öff&amp;nen</translation>
    </message>
    <message>
        <source>Link</source>
        <translation>Verbindung</translation>
    </message>
    <message>
        <source>Tags</source>
        <translation>Variablen</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Remove the marked tags</source>
        <translation>Die markierten Variablen entfernen</translation>
    </message>
    <message>
        <source>Stat&amp;ion of tags that name none:</source>
        <translation>St&amp;ation von Variablen ohne Angabe:</translation>
    </message>
</context>
<context>
    <name>kmr::TagEdit</name>
    <message numerus="yes">
        <source>%n bit(s)</source>
        <translation>
            <numerusform>%n Bit</numerusform>
            <numerusform>%n Bits</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n word(s)</source>
        <translation>
            <numerusform>%n Wort</numerusform>
            <numerusform>%n Wörter</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n counter(s)</source>
        <translation>
            <numerusform>%n Zähler</numerusform>
            <numerusform>%n Zähler</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n bit(s) of words</source>
        <translation>
            <numerusform>%n Bit von Wörtern</numerusform>
            <numerusform>%n Bits von Wörtern</numerusform>
        </translation>
    </message>
    <message>
        <source>station %1, %2: %3, %4</source>
        <translation>Station %1, %2: %3, %4</translation>
    </message>
    <message>
        <source>can be written</source>
        <translation>schreibbar</translation>
    </message>
    <message>
        <source>can only be read</source>
        <translation>nur lesbar</translation>
    </message>
    <message>
        <source>&amp;Add tag</source>
        <translation>Hin&amp;zufügen</translation>
    </message>
    <message>
        <source>A tag: D100, X0x8, 2#D100/int16, or a name</source>
        <translation>Eine Variable: D100, X0x8, 2#D100/int16 oder ein Name</translation>
    </message>
    <message>
        <source>Tag to add</source>
        <translation>Variable zum Hinzufügen</translation>
    </message>
    <message>
        <source>What the driver says of the tag</source>
        <translation>Was der Treiber zu der Variablen sagt</translation>
    </message>
</context>
<context>
    <name>kmr::TrafficModel</name>
    <message>
        <source>done</source>
        <translation>erledigt</translation>
    </message>
    <message>
        <source>%1 ms</source>
        <translation>%1 ms</translation>
    </message>
    <message>
        <source>Time</source>
        <translation>Zeit</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Function</source>
        <translation>Funktion</translation>
    </message>
    <message>
        <source>Elements</source>
        <translation>Elemente</translation>
    </message>
    <message>
        <source>Round trip</source>
        <translation>Antwortzeit</translation>
    </message>
    <message>
        <source>Answer</source>
        <translation>Antwort</translation>
    </message>
</context>
<context>
    <name>kmr::TrafficView</name>
    <message>
        <source>Exchanges</source>
        <translation>Austausche</translation>
    </message>
    <message>
        <source>The marked exchange, byte by byte</source>
        <translation>Der markierte Austausch, Byte für Byte</translation>
    </message>
    <message>
        <source>From</source>
        <translation>Von</translation>
    </message>
    <message>
        <source>Characters</source>
        <translation>Zeichen</translation>
    </message>
    <message>
        <source>What</source>
        <translation>Was</translation>
    </message>
    <message>
        <source>Meaning</source>
        <translation>Bedeutung</translation>
    </message>
    <message>
        <source>Station</source>
        <translation>Station</translation>
    </message>
    <message>
        <source>Only this station</source>
        <translation>Nur diese Station</translation>
    </message>
    <message>
        <source>Only this function</source>
        <translation>Nur diese Funktion</translation>
    </message>
    <message>
        <source>All functions</source>
        <translation>Alle Funktionen</translation>
    </message>
    <message>
        <source>Only these outcomes</source>
        <translation>Nur diese Ergebnisse</translation>
    </message>
    <message>
        <source>All outcomes</source>
        <translation>Alle Ergebnisse</translation>
    </message>
    <message>
        <source>Good</source>
        <translation>Gut</translation>
    </message>
    <message>
        <source>Refused</source>
        <translation>Abgelehnt</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Fehlversuche</translation>
    </message>
    <message>
        <source>No answer</source>
        <translation>Keine Antwort</translation>
    </message>
    <message>
        <source>Bad answer</source>
        <translation>Falsche Antwort</translation>
    </message>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
    <message>
        <source>Capture to file…</source>
        <translation>Mitschneiden…</translation>
    </message>
    <message>
        <source>host</source>
        <translation>Host</translation>
    </message>
    <message>
        <source>controller</source>
        <translation>Steuerung</translation>
    </message>
    <message>
        <source>line</source>
        <translation>Leitung</translation>
    </message>
    <message>
        <source>all characters</source>
        <translation>alle Zeichen</translation>
    </message>
    <message>
        <source>with what belongs to no frame</source>
        <translation>mit dem, was zu keinem Telegramm gehört</translation>
    </message>
    <message>
        <source>Capture to a new file</source>
        <translation>In eine neue Datei mitschneiden</translation>
    </message>
    <message>
        <source>Captures (*.kmr);;All files (*)</source>
        <translation>Mitschnitte (*.kmr);;Alle Dateien (*)</translation>
    </message>
    <message>
        <source>Capturing: stop</source>
        <translation>Mitschnitt beenden</translation>
    </message>
</context>
<context>
    <name>kmr::TrendPlot</name>
    <message>
        <source>Numbers over time</source>
        <translation>Zahlen im Verlauf</translation>
    </message>
    <message>
        <source>Bits over time</source>
        <translation>Bits im Verlauf</translation>
    </message>
    <message>
        <source>Trends</source>
        <translation>Verläufe</translation>
    </message>
</context>
<context>
    <name>kmr::TrendTable</name>
    <message>
        <source>Figures of the trends</source>
        <translation>Kennzahlen der Verläufe</translation>
    </message>
    <message>
        <source>Tag</source>
        <translation>Variable</translation>
    </message>
    <message>
        <source>Cursor</source>
        <translation>Zeiger</translation>
    </message>
    <message>
        <source>At A</source>
        <translation>Bei A</translation>
    </message>
    <message>
        <source>At B</source>
        <translation>Bei B</translation>
    </message>
    <message>
        <source>B − A</source>
        <translation>B − A</translation>
    </message>
    <message>
        <source>Least</source>
        <translation>Kleinster</translation>
    </message>
    <message>
        <source>Most</source>
        <translation>Größter</translation>
    </message>
    <message>
        <source>Mean</source>
        <translation>Mittel</translation>
    </message>
    <message>
        <source>Axis</source>
        <translation>Achse</translation>
    </message>
    <message>
        <source>Factor</source>
        <translation>Faktor</translation>
    </message>
    <message>
        <source>Offset</source>
        <translation>Offset</translation>
    </message>
    <message>
        <source>lane</source>
        <translation>Spur</translation>
    </message>
    <message>
        <source>right</source>
        <translation>rechts</translation>
    </message>
    <message>
        <source>left</source>
        <translation>links</translation>
    </message>
    <message>
        <source>A double click or Return moves it to the other axis.</source>
        <translation>Ein Doppelklick oder die Eingabetaste wechselt die Achse.</translation>
    </message>
</context>
<context>
    <name>kmr::TrendView</name>
    <message>
        <source>cannot write %1</source>
        <translation>%1 kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>Drag tags here, or mark them in the table and press Ctrl+T.</source>
        <translation>Variablen hierher ziehen, oder in der Tabelle markieren und Strg+T drücken.</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message>
        <source>Stop moving; what comes is kept (Space)</source>
        <translation>Anhalten; was kommt, wird behalten (Leertaste)</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Show all that was measured (Home)</source>
        <translation>Alles Gemessene zeigen (Pos1)</translation>
    </message>
    <message>
        <source>Marker A</source>
        <translation>Marke A</translation>
    </message>
    <message>
        <source>Put marker A into the first third; the key A puts it under the mouse</source>
        <translation>Marke A in das erste Drittel setzen; die Taste A setzt sie unter die Maus</translation>
    </message>
    <message>
        <source>Marker B</source>
        <translation>Marke B</translation>
    </message>
    <message>
        <source>Put marker B into the last third; the key B puts it under the mouse</source>
        <translation>Marke B in das letzte Drittel setzen; die Taste B setzt sie unter die Maus</translation>
    </message>
    <message>
        <source>No markers</source>
        <translation>Keine Marken</translation>
    </message>
    <message>
        <source>Take the markers away (Escape)</source>
        <translation>Die Marken entfernen (Escape)</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Hide the marked tags (Delete)</source>
        <translation>Die markierten Variablen ausblenden (Entf)</translation>
    </message>
    <message>
        <source>Export…</source>
        <translation>Ausgeben…</translation>
    </message>
    <message>
        <source>Write the visible span as CSV, PNG or SVG (Ctrl+E)</source>
        <translation>Den sichtbaren Abschnitt als CSV, PNG oder SVG schreiben (Strg+E)</translation>
    </message>
    <message>
        <source>Export the visible span</source>
        <translation>Den sichtbaren Abschnitt ausgeben</translation>
    </message>
    <message>
        <source>Values (*.csv);;Picture of pixels (*.png);;Picture of lines (*.svg)</source>
        <translation>Werte (*.csv);;Pixelbild (*.png);;Linienbild (*.svg)</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Ausgeben</translation>
    </message>
    <message>
        <source>%1: the name is to end with .csv, .png or .svg</source>
        <translation>%1: Der Name muss auf .csv, .png oder .svg enden</translation>
    </message>
</context>
<context>
    <name>kmr::ValuesModel</name>
    <message>
        <source>good</source>
        <translation>gut</translation>
    </message>
    <message>
        <source>stale</source>
        <translation>veraltet</translation>
    </message>
    <message>
        <source>pending</source>
        <translation>offen</translation>
    </message>
    <message>
        <source>%1 not good</source>
        <translation>%1 nicht gut</translation>
    </message>
    <message>
        <source>A group; a click shows its tags</source>
        <translation>Eine Gruppe; ein Klick zeigt ihre Variablen</translation>
    </message>
    <message>
        <source>A group; a click hides its tags</source>
        <translation>Eine Gruppe; ein Klick verbirgt ihre Variablen</translation>
    </message>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1, %2: %3</source>
        <translation>%1, %2: %3</translation>
    </message>
    <message>
        <source>Can only be read.</source>
        <translation>Nur lesbar.</translation>
    </message>
    <message>
        <source>Tag</source>
        <translation>Variable</translation>
    </message>
    <message>
        <source>Value</source>
        <translation>Wert</translation>
    </message>
    <message>
        <source>Unit</source>
        <translation>Einheit</translation>
    </message>
    <message>
        <source>Quality</source>
        <translation>Qualität</translation>
    </message>
    <message>
        <source>Course</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Age</source>
        <translation>Alter</translation>
    </message>
    <message>
        <source>Changes</source>
        <translation>Wechsel</translation>
    </message>
    <message>
        <source>Address</source>
        <translation>Adresse</translation>
    </message>
</context>
<context>
    <name>kmr::ValuesView</name>
    <message>
        <source>&amp;Tag</source>
        <translation>&amp;Variable</translation>
    </message>
    <message>
        <source>Filter</source>
        <translation>Filter</translation>
    </message>
    <message>
        <source>Filter tags by text</source>
        <translation>Variablen nach Text filtern</translation>
    </message>
    <message>
        <source>Filter tags by state</source>
        <translation>Variablen nach Zustand filtern</translation>
    </message>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Not good</source>
        <translation>Nicht gut</translation>
    </message>
    <message>
        <source>Moving</source>
        <translation>Bewegt</translation>
    </message>
    <message>
        <source>Still</source>
        <translation>Ruhig</translation>
    </message>
    <message>
        <source>Group tags</source>
        <translation>Variablen gruppieren</translation>
    </message>
    <message>
        <source>No groups</source>
        <translation>Ohne Gruppen</translation>
    </message>
    <message>
        <source>By area</source>
        <translation>Nach Bereich</translation>
    </message>
    <message>
        <source>By station</source>
        <translation>Nach Station</translation>
    </message>
    <message>
        <source>By name</source>
        <translation>Nach Name</translation>
    </message>
    <message>
        <source>By what precedes the first dot or slash of a name</source>
        <translation>Nach dem, was vor dem ersten Punkt oder Schrägstrich eines Namens steht</translation>
    </message>
    <message>
        <source>Values</source>
        <translation>Werte</translation>
    </message>
    <message>
        <source>&amp;Write…</source>
        <translation>&amp;Schreiben…</translation>
    </message>
    <message>
        <source>&amp;Format</source>
        <translation>&amp;Format</translation>
    </message>
    <message>
        <source>Show &amp;trend</source>
        <translation>&amp;Verlauf zeigen</translation>
    </message>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>&amp;Plain</source>
        <translation>Ein&amp;fach</translation>
    </message>
</context>
<context>
    <name>kmr::WriteDialog</name>
    <message>
        <source>&amp;Write</source>
        <translation>&amp;Schreiben</translation>
    </message>
    <message>
        <source>Write %1</source>
        <translation>%1 schreiben</translation>
    </message>
    <message>
        <source>New value</source>
        <translation>Neuer Wert</translation>
    </message>
    <message>
        <source>Tag:</source>
        <translation>Variable:</translation>
    </message>
    <message>
        <source>It holds:</source>
        <translation>Sie hält:</translation>
    </message>
    <message>
        <source>not read yet</source>
        <translation>noch nicht gelesen</translation>
    </message>
    <message>
        <source>&amp;New value:</source>
        <translation>&amp;Neuer Wert:</translation>
    </message>
    <message>
        <source>Type what the controller is to hold.</source>
        <translation>Eingeben, was die Steuerung halten soll.</translation>
    </message>
    <message>
        <source>%1 will be %2.</source>
        <translation>%1 wird %2.</translation>
    </message>
    <message>
        <source>%1 will be %2 instead of %3.</source>
        <translation>%1 wird %2 statt %3.</translation>
    </message>
    <message>
        <source>Writing…</source>
        <translation>Wird geschrieben…</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Shows the values, trends and traffic of a line of Ostrel KMR controllers.</source>
        <translation>Zeigt Werte, Verläufe und Verkehr einer Leitung mit Ostrel-KMR-Steuerungen.</translation>
    </message>
    <message>
        <source>the project to open, a kmr.toml; without one it asks</source>
        <translation>das Projekt, das geöffnet wird, eine kmr.toml; ohne fragt es</translation>
    </message>
</context>
</TS>
