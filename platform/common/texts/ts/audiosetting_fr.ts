<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr_FR" sourcelanguage="en">
<context>
    <name></name>
    <message id="txt_17">
        <source>Android Auto</source>
        <extracomment>Source of the input gains; a product name</extracomment>
        <translation>Android Auto</translation>
    </message>
    <message id="txt_18">
        <source>USB</source>
        <extracomment>Source of the input gains</extracomment>
        <translation>USB</translation>
    </message>
    <message id="txt_141">
        <source>Settings</source>
        <extracomment>The word for settings: second line of tabs, end of titles; upper-cased. 150 px at 16 pt</extracomment>
        <translation>Réglages</translation>
    </message>
    <message id="txt_195">
        <source>Graphic</source>
        <extracomment>First line of the equalizer tab, above 387; upper-cased. 150 px at 16 pt</extracomment>
        <translation>Réglage</translation>
    </message>
    <message id="txt_224">
        <source>Reset</source>
        <extracomment>Reset key of the time alignment; upper-cased. 142 px</extracomment>
        <translation>Réinit.</translation>
    </message>
    <message id="txt_236">
        <source>Subwoofer</source>
        <extracomment>Subwoofer: speaker, speaker group, row; upper-cased. 173 px</extracomment>
        <translation>Subwoofer</translation>
    </message>
    <message id="txt_237">
        <source>R&amp;B</source>
        <extracomment>Equalizer preset; upper-cased on its tile, 217 px at 32 pt bold</extracomment>
        <translation>R&amp;B</translation>
    </message>
    <message id="txt_238">
        <source>Pop</source>
        <extracomment>Equalizer preset; see 237</extracomment>
        <translation>Pop</translation>
    </message>
    <message id="txt_239">
        <source>Rock</source>
        <extracomment>Equalizer preset; see 237</extracomment>
        <translation>Rock</translation>
    </message>
    <message id="txt_240">
        <source>Hip-Hop</source>
        <extracomment>Equalizer preset; see 237</extracomment>
        <translation>Hip-Hop</translation>
    </message>
    <message id="txt_246">
        <source>Jazz</source>
        <extracomment>Equalizer preset; see 237</extracomment>
        <translation>Jazz</translation>
    </message>
    <message id="txt_266">
        <source>Front</source>
        <extracomment>Front speakers, key of the crossover; upper-cased. 173 px</extracomment>
        <translation>Avant</translation>
    </message>
    <message id="txt_267">
        <source>Rear</source>
        <extracomment>Rear speakers, key of the crossover; upper-cased. 173 px</extracomment>
        <translation>Arrière</translation>
    </message>
    <message id="txt_366">
        <source>Radio</source>
        <extracomment>Source of the input gains</extracomment>
        <translation>Radio</translation>
    </message>
    <message id="txt_368">
        <source>AUX</source>
        <extracomment>Source of the input gains: auxiliary input</extracomment>
        <translation>AUX</translation>
    </message>
    <message id="txt_369">
        <source>BT Audio</source>
        <extracomment>Source of the input gains: music over Bluetooth</extracomment>
        <translation>Audio BT</translation>
    </message>
    <message id="txt_384">
        <source>Subwoofer level</source>
        <extracomment>Row of the subwoofer's level; upper-cased. 355 px</extracomment>
        <translation>Niveau du subwoofer</translation>
    </message>
    <message id="txt_387">
        <source>Equalizer</source>
        <extracomment>Title of the equalizer page, and upper-cased the second line of its tab below 195. 150 px at 16 pt</extracomment>
        <translation>ÉGALISEUR</translation>
    </message>
    <message id="txt_421">
        <source>Bal/Fader</source>
        <extracomment>Balance/fader: first line of the tab above 141; upper-cased. 150 px at 16 pt</extracomment>
        <translation>Bal/Fader</translation>
    </message>
    <message id="txt_435">
        <source>Volume</source>
        <extracomment>Title above the live volumes; upper-cased</extracomment>
        <translation>Volume</translation>
    </message>
    <message id="txt_436">
        <source>Main volume</source>
        <extracomment>Live volume of a channel; upper-cased. 403 px</extracomment>
        <translation>Volume principal</translation>
    </message>
    <message id="txt_437">
        <source>Ringtone</source>
        <extracomment>Live volume of a channel; upper-cased. 403 px</extracomment>
        <translation>Sonnerie</translation>
    </message>
    <message id="txt_438">
        <source>Call</source>
        <extracomment>Live volume of a channel; upper-cased. 403 px</extracomment>
        <translation>Appel</translation>
    </message>
    <message id="txt_439">
        <source>Navigation</source>
        <extracomment>Live volume of a channel; upper-cased. 403 px</extracomment>
        <translation>Navigation</translation>
    </message>
    <message id="txt_440">
        <source>Voice</source>
        <extracomment>Live volume of a channel; upper-cased. 403 px</extracomment>
        <translation>Voix</translation>
    </message>
    <message id="txt_441">
        <source>Input gain</source>
        <extracomment>Title above the input gains of the sources; upper-cased, after a blank</extracomment>
        <translation>Gain d’entrée</translation>
    </message>
    <message id="txt_443">
        <source>CarPlay</source>
        <extracomment>Source of the input gains; a product name</extracomment>
        <translation>CarPlay</translation>
    </message>
    <message id="txt_444">
        <source>Loudness</source>
        <extracomment>Row of the loudness switch; upper-cased. 355 px</extracomment>
        <translation>Loudness</translation>
    </message>
    <message id="txt_735">
        <source>Time </source>
        <extracomment>The word for time, with its blank at the end: "ALIGNMENT" follows directly; upper-cased. 150 px at 16 pt</extracomment>
        <translation>Temps </translation>
    </message>
    <message id="txt_790">
        <source>Off</source>
        <extracomment>Value of a filter that is switched off. 168 px at 18 pt</extracomment>
        <translation>Arrêt</translation>
    </message>
    <message id="txt_1226">
        <source>Flat</source>
        <extracomment>Equalizer preset without any change of the sound; see 237</extracomment>
        <translation>Plat</translation>
    </message>
    <message id="txt_1227">
        <source>EQ PRESET</source>
        <extracomment>Tab and title of the presets; shown as it is, each space a line break on the tab: exactly one. 150 px at 16 pt</extracomment>
        <translation>PRÉRÉGLAGE EQ</translation>
    </message>
    <message id="txt_1228">
        <source>Main audio</source>
        <extracomment>Title of the main speakers' filter columns; upper-cased. 306 px at 20 pt</extracomment>
        <translation>Audio principal</translation>
    </message>
    <message id="txt_1229">
        <source>Crossover </source>
        <extracomment>The word for crossover, with its blank at the end: 141 or 1247 follows directly. With 141 upper-cased 400 px at 28 pt</extracomment>
        <translation>Crossover </translation>
    </message>
    <message id="txt_1230">
        <source>SUB Filter</source>
        <extracomment>Frequency of the subwoofer's filter. 161 x 20 px</extracomment>
        <translation>Filtre SUB</translation>
    </message>
    <message id="txt_1231">
        <source>SUB Level</source>
        <extracomment>Level of the subwoofer. 161 x 20 px</extracomment>
        <translation>Niveau SUB</translation>
    </message>
    <message id="txt_1239">
        <source>FRONT LEFT</source>
        <extracomment>Speaker of the time alignment; shown as it is. 228 px</extracomment>
        <translation>AVANT GAUCHE</translation>
    </message>
    <message id="txt_1240">
        <source>FRONT RIGHT</source>
        <extracomment>Speaker of the time alignment; shown as it is. 228 px</extracomment>
        <translation>AVANT DROIT</translation>
    </message>
    <message id="txt_1241">
        <source>REAR LEFT</source>
        <extracomment>Speaker of the time alignment; shown as it is. 228 px</extracomment>
        <translation>ARRIÈRE GAUCHE</translation>
    </message>
    <message id="txt_1242">
        <source>REAR RIGHT</source>
        <extracomment>Speaker of the time alignment; shown as it is. 228 px</extracomment>
        <translation>ARRIÈRE DROIT</translation>
    </message>
    <message id="txt_1243">
        <source>HIGH PASS</source>
        <extracomment>Row title of the crossover frequency, front and rear; shown as it is</extracomment>
        <translation>PASSE-HAUT</translation>
    </message>
    <message id="txt_1244">
        <source>LOW PASS</source>
        <extracomment>Row title of the crossover frequency, subwoofer; shown as it is</extracomment>
        <translation>PASSE-BAS</translation>
    </message>
    <message id="txt_1246">
        <source>VOLUME LEVELS</source>
        <extracomment>Tab and title of the volume page; shown as it is on the tab, each space a line break: exactly one. 150 px at 16 pt</extracomment>
        <translation>NIVEAUX VOLUME</translation>
    </message>
    <message id="txt_1247">
        <source>Settings</source>
        <extracomment>Second word of the crossover's title, directly after 1229; upper-cased</extracomment>
        <translation>Réglages</translation>
    </message>
    <message id="txt_1249">
        <source>Main volume</source>
        <extracomment>Volume of a channel when the unit is switched on; upper-cased. 403 px</extracomment>
        <translation>Volume principal</translation>
    </message>
    <message id="txt_1250">
        <source>Ringtone</source>
        <extracomment>Volume of a channel when the unit is switched on; upper-cased. 403 px</extracomment>
        <translation>Sonnerie</translation>
    </message>
    <message id="txt_1251">
        <source>Call</source>
        <extracomment>Volume of a channel when the unit is switched on; upper-cased. 403 px</extracomment>
        <translation>Appel</translation>
    </message>
    <message id="txt_1254">
        <source>Navigation</source>
        <extracomment>Volume of a channel when the unit is switched on; upper-cased. 403 px</extracomment>
        <translation>Navigation</translation>
    </message>
    <message id="txt_1255">
        <source>Voice</source>
        <extracomment>Volume of a channel when the unit is switched on; upper-cased. 403 px</extracomment>
        <translation>Voix</translation>
    </message>
    <message id="txt_1256">
        <source>Default volume</source>
        <extracomment>Title above the volumes that the unit starts with; upper-cased, after a blank</extracomment>
        <translation>Volume par défaut</translation>
    </message>
    <message id="txt_1258">
        <source>User 1</source>
        <extracomment>Equalizer curve drawn by the user; upper-cased on its tile, 217 px at 32 pt bold</extracomment>
        <translation>Perso 1</translation>
    </message>
    <message id="txt_1259">
        <source>User 2</source>
        <extracomment>Equalizer curve drawn by the user; upper-cased on its tile, 217 px at 32 pt bold</extracomment>
        <translation>Perso 2</translation>
    </message>
    <message id="txt_1260">
        <source>Settings won't be kept</source>
        <extracomment>Mark of the status bar and line of the inspector: a change made now is gone at power-off</extracomment>
        <translation>Les réglages ne seront pas conservés</translation>
    </message>
    <message id="txt_1270">
        <source>Could not be started</source>
        <extracomment>On the launcher, below the name of an application or a source; two lines of 192 px at 18 px</extracomment>
        <translation>N'a pas pu démarrer</translation>
    </message>
    <message id="txt_1271">
        <source>Touch to try again</source>
        <extracomment>Below text 1270; two lines of 192 px at 18 px</extracomment>
        <translation>Toucher pour réessayer</translation>
    </message>
</context>
</TS>
