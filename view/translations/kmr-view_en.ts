<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en">
<context>
    <name>kmr::PlanView</name>
    <message numerus="yes">
        <source>A host that passes these tags as they are typed never reads %n element(s) correctly; this window does. Mark &quot;tags as typed&quot; to see which.</source>
        <translation>
            <numerusform>A host that passes these tags as they are typed never reads %n element correctly; this window does. Mark &quot;tags as typed&quot; to see which.</numerusform>
            <numerusform>A host that passes these tags as they are typed never reads %n elements correctly; this window does. Mark &quot;tags as typed&quot; to see which.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>kmr::RecipeView</name>
    <message numerus="yes">
        <source>%1: %n entries</source>
        <translation>
            <numerusform>%1: %n entry</numerusform>
            <numerusform>%1: %n entries</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Write %n entries of %1 to the controller?</source>
        <translation>
            <numerusform>Write %n entry of %1 to the controller?</numerusform>
            <numerusform>Write %n entries of %1 to the controller?</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n entries differ.</source>
        <translation>
            <numerusform>%n entry differs.</numerusform>
            <numerusform>%n entries differ.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>kmr::TagEdit</name>
    <message numerus="yes">
        <source>%n bit(s)</source>
        <translation>
            <numerusform>%n bit</numerusform>
            <numerusform>%n bits</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n word(s)</source>
        <translation>
            <numerusform>%n word</numerusform>
            <numerusform>%n words</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n counter(s)</source>
        <translation>
            <numerusform>%n counter</numerusform>
            <numerusform>%n counters</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n bit(s) of words</source>
        <translation>
            <numerusform>%n bit of words</numerusform>
            <numerusform>%n bits of words</numerusform>
        </translation>
    </message>
</context>
</TS>
