<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="en_US">
<context>
    <name>CameraTools</name>
    <message>
        <source>Contrast threshold of ON events. Higher: fewer ON events and less noise.</source>
        <translation>Contrast threshold of ON events. Higher: fewer ON events and less noise.</translation>
    </message>
    <message>
        <source>Contrast threshold of OFF events. Higher: fewer OFF events and less noise.</source>
        <translation>Contrast threshold of OFF events. Higher: fewer OFF events and less noise.</translation>
    </message>
    <message>
        <source>Records the edges of the signal at the trigger input.</source>
        <translation>Records the edges of the signal at the trigger input.</translation>
    </message>
    <message>
        <source>Bandwidth of the pixels. Higher: faster response. Lower: less noise.</source>
        <translation>Bandwidth of the pixels. Higher: faster response. Lower: less noise.</translation>
    </message>
    <message>
        <source>Suppresses slow changes and background activity. 0 is off.</source>
        <translation>Suppresses slow changes and background activity. 0 is off.</translation>
    </message>
    <message>
        <source>Dead time of a pixel after an event. Higher: fewer events per edge.</source>
        <translation>Dead time of a pixel after an event. Higher: fewer events per edge.</translation>
    </message>
    <message>
        <source>How long each picture gathers light. Longer: brighter.</source>
        <translation>How long each picture gathers light. Longer: brighter.</translation>
    </message>
    <message>
        <source>Amplifies the picture. 6 dB act like twice the exposure.</source>
        <translation>Amplifies the picture. 6 dB act like twice the exposure.</translation>
    </message>
    <message>
        <source>Value of pixels without light, added to every pixel.</source>
        <translation>Value of pixels without light, added to every pixel.</translation>
    </message>
    <message>
        <source>Turns the picture upside down. Events are not turned.</source>
        <translation>Turns the picture upside down. Events are not turned.</translation>
    </message>
    <message>
        <source>Delivers only the events of a window of the sensor.</source>
        <translation>Delivers only the events of a window of the sensor.</translation>
    </message>
    <message>
        <source>Delivers the events outside the window instead.</source>
        <translation>Delivers the events outside the window instead.</translation>
    </message>
    <message>
        <source>First column of the window, which must lie on the sensor.</source>
        <translation>First column of the window, which must lie on the sensor.</translation>
    </message>
    <message>
        <source>First row of the window, which must lie on the sensor.</source>
        <translation>First row of the window, which must lie on the sensor.</translation>
    </message>
    <message>
        <source>Width of the window, which must lie on the sensor.</source>
        <translation>Width of the window, which must lie on the sensor.</translation>
    </message>
    <message>
        <source>Height of the window, which must lie on the sensor.</source>
        <translation>Height of the window, which must lie on the sensor.</translation>
    </message>
    <message>
        <source>Thins out the bursts of equal events that edges cause at each pixel.</source>
        <translation>Thins out the bursts of equal events that edges cause at each pixel.</translation>
    </message>
    <message>
        <source>What is kept of a burst: its first event, all but the first, or only the second.</source>
        <translation>What is kept of a burst: its first event, all but the first, or only the second.</translation>
    </message>
    <message>
        <source>Longest time between two events of a burst.</source>
        <translation>Longest time between two events of a burst.</translation>
    </message>
    <message>
        <source>Removes the events of flickering lights and keeps motion.</source>
        <translation>Removes the events of flickering lights and keeps motion.</translation>
    </message>
    <message>
        <source>Band-stop removes what flickers in the band, band-pass all the rest.</source>
        <translation>Band-stop removes what flickers in the band, band-pass all the rest.</translation>
    </message>
    <message>
        <source>Lower end of the band. Lamps flicker at twice the mains frequency.</source>
        <translation>Lower end of the band. Lamps flicker at twice the mains frequency.</translation>
    </message>
    <message>
        <source>Upper end of the band, not below its lower end.</source>
        <translation>Upper end of the band, not below its lower end.</translation>
    </message>
    <message>
        <source>Holds the event rate at its limit by dropping events evenly.</source>
        <translation>Holds the event rate at its limit by dropping events evenly.</translation>
    </message>
    <message>
        <source>The most events delivered, in thousands per second.</source>
        <translation>The most events delivered, in thousands per second.</translation>
    </message>
</context>
<context>
    <name>CamerasList</name>
    <message>
        <source>Open a camera</source>
        <translation>Open a camera</translation>
    </message>
    <message>
        <source>Search Cameras...</source>
        <translation>Search Cameras...</translation>
    </message>
    <message>
        <source>Camera List</source>
        <translation>Camera List</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Open</translation>
    </message>
</context>
<context>
    <name>InitDialog</name>
    <message>
        <source>Version: %1</source>
        <translation>Version: %1</translation>
    </message>
    <message>
        <source>© 2024–2026 Korvane Imaging. All rights reserved.</source>
        <translation>© 2024–2026 Korvane Imaging. All rights reserved.</translation>
    </message>
</context>
<context>
    <name>KvCutRawFile</name>
    <message>
        <source>Cut Recording</source>
        <translation>Cut Recording</translation>
    </message>
    <message>
        <source>Start Time</source>
        <translation>Start Time</translation>
    </message>
    <message>
        <source>End Time</source>
        <translation>End Time</translation>
    </message>
    <message>
        <source>Save File Path</source>
        <translation>Save File Path</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>Select Directory</translation>
    </message>
    <message>
        <source>File Name</source>
        <translation>File Name</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>Cut</translation>
    </message>
</context>
<context>
    <name>KvExportVideoUI</name>
    <message>
        <source>Export a video</source>
        <translation>Export a video</translation>
    </message>
    <message>
        <source>Start Time</source>
        <translation>Start Time</translation>
    </message>
    <message>
        <source>End Time</source>
        <translation>End Time</translation>
    </message>
    <message>
        <source>Save File Path</source>
        <translation>Save File Path</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>Select Directory</translation>
    </message>
    <message>
        <source>File Name</source>
        <translation>File Name</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>Export</translation>
    </message>
</context>
<context>
    <name>KvFilePathReminderForm</name>
    <message>
        <source>Success</source>
        <translation>Success</translation>
    </message>
    <message>
        <source>Open Dir</source>
        <translation>Open Dir</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>Warning</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>Error</translation>
    </message>
</context>
<context>
    <name>KvGeneralSetting</name>
    <message>
        <source>General Settings</source>
        <translation>General Settings</translation>
    </message>
    <message>
        <source>File</source>
        <translation>File</translation>
    </message>
    <message>
        <source>File Settings</source>
        <translation>File Settings</translation>
    </message>
    <message>
        <source>Default Out Raw File Path</source>
        <translation>Default Out Raw File Path</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>Select Directory</translation>
    </message>
    <message>
        <source>Default Video File Path</source>
        <translation>Default Video File Path</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>Save</translation>
    </message>
</context>
<context>
    <name>LanguageSwitch</name>
    <message>
        <source>The language change will take effect after restart.</source>
        <translation>The language change will take effect after restart.</translation>
    </message>
    <message>
        <source>Tips</source>
        <translation>Tips</translation>
    </message>
    <message>
        <source>Restart</source>
        <translation>Restart</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>Later</translation>
    </message>
</context>
<context>
    <name>LiveSession</name>
    <message>
        <source>Open camera: </source>
        <translation>Open camera: </translation>
    </message>
    <message>
        <source>failed.</source>
        <translation>failed.</translation>
    </message>
    <message>
        <source>Save file success!</source>
        <translation>Save file success!</translation>
    </message>
    <message>
        <source>Recording stopped: </source>
        <translation>Recording stopped: </translation>
    </message>
    <message>
        <source>the file has no name</source>
        <translation>the file has no name</translation>
    </message>
    <message>
        <source>the folder cannot be made</source>
        <translation>the folder cannot be made</translation>
    </message>
    <message>
        <source>the file has been removed</source>
        <translation>the file has been removed</translation>
    </message>
    <message>
        <source>the file has been truncated</source>
        <translation>the file has been truncated</translation>
    </message>
    <message>
        <source>there is not enough memory</source>
        <translation>there is not enough memory</translation>
    </message>
    <message>
        <source>No space left on device</source>
        <translation>No space left on device</translation>
    </message>
    <message>
        <source>Permission denied</source>
        <translation>Permission denied</translation>
    </message>
    <message>
        <source>this machine&apos;s FFmpeg has no encoder for H.264 or MPEG-4</source>
        <translation>this machine&apos;s FFmpeg has no encoder for H.264 or MPEG-4</translation>
    </message>
    <message>
        <source>Frames are not recorded: </source>
        <translation>Frames are not recorded: </translation>
    </message>
    <message>
        <source>the camera&apos;s clock has leapt by more than thirty days</source>
        <translation>the camera&apos;s clock has leapt by more than thirty days</translation>
    </message>
    <message>
        <source>no frame could be recorded for five minutes</source>
        <translation>no frame could be recorded for five minutes</translation>
    </message>
</context>
<context>
    <name>MainWidget</name>
    <message>
        <source>Camera not found: </source>
        <translation>Camera not found: </translation>
    </message>
    <message>
        <source>Play/Stop</source>
        <translation>Play/Stop</translation>
    </message>
    <message>
        <source>Start/Stop recording</source>
        <translation>Start/Stop recording</translation>
    </message>
    <message>
        <source>Previous frame</source>
        <translation>Previous frame</translation>
    </message>
    <message>
        <source>Next frame</source>
        <translation>Next frame</translation>
    </message>
    <message>
        <source>Reset the playback progress to the beginning</source>
        <translation>Reset the playback progress to the beginning</translation>
    </message>
    <message>
        <source>Select to automatically replay at the end of the playback</source>
        <translation>Select to automatically replay at the end of the playback</translation>
    </message>
</context>
<context>
    <name>MenuActions</name>
    <message>
        <source>Is it open in the browser?</source>
        <translation>Is it open in the browser?</translation>
    </message>
    <message>
        <source>Tips</source>
        <translation>Tips</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>Open</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>RangeDialog</name>
    <message>
        <source>Select Directory</source>
        <translation>Select Directory</translation>
    </message>
</context>
<context>
    <name>RangeSaver</name>
    <message>
        <source>Please open a raw file first.</source>
        <translation>Please open a raw file first.</translation>
    </message>
    <message>
        <source>Export video success!</source>
        <translation>Export video success!</translation>
    </message>
    <message>
        <source>Export raw file success!</source>
        <translation>Export raw file success!</translation>
    </message>
</context>
<context>
    <name>RecordingOpener</name>
    <message>
        <source>Select a raw file</source>
        <translation>Select a raw file</translation>
    </message>
    <message>
        <source>RAW files (*.raw)</source>
        <translation>RAW files (*.raw)</translation>
    </message>
    <message>
        <source>Load fusion file failed: </source>
        <translation>Load fusion file failed: </translation>
    </message>
</context>
<context>
    <name>SettingDisplayItem</name>
    <message>
        <source>Accumulation time</source>
        <translation>Accumulation time</translation>
    </message>
    <message>
        <source>Slow Rate</source>
        <translation>Slow Rate</translation>
    </message>
</context>
<context>
    <name>SidebarApsSettingUI</name>
    <message>
        <source>APS Setting</source>
        <translation>APS Setting</translation>
    </message>
    <message>
        <source>APS</source>
        <translation>APS</translation>
    </message>
</context>
<context>
    <name>SidebarCameraSettingUI</name>
    <message>
        <source>Camera Setting</source>
        <translation>Camera Setting</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>Display</translation>
    </message>
</context>
<context>
    <name>SidebarDvsSettingUI</name>
    <message>
        <source>DVS Setting</source>
        <translation>DVS Setting</translation>
    </message>
    <message>
        <source>Biases</source>
        <translation>Biases</translation>
    </message>
    <message>
        <source>Trigger In</source>
        <translation>Trigger In</translation>
    </message>
    <message>
        <source>Anti Flicker</source>
        <translation>Anti Flicker</translation>
    </message>
    <message>
        <source>Event Rate Control</source>
        <translation>Event Rate Control</translation>
    </message>
    <message>
        <source>Event Trail Filter</source>
        <translation>Event Trail Filter</translation>
    </message>
    <message>
        <source>ROI</source>
        <translation>ROI</translation>
    </message>
</context>
<context>
    <name>Widget</name>
    <message>
        <source>Widget</source>
        <translation>Widget</translation>
    </message>
    <message>
        <source>File</source>
        <translation>File</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>Device</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>Setting</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Help</translation>
    </message>
    <message>
        <source>Camera: </source>
        <translation>Camera: </translation>
    </message>
    <message>
        <source> | Time: </source>
        <translation> | Time: </translation>
    </message>
    <message>
        <source>--/ --</source>
        <translation>--/ --</translation>
    </message>
</context>
<context>
    <name>WindowMenus</name>
    <message>
        <source>Open Camera</source>
        <translation>Open Camera</translation>
    </message>
    <message>
        <source>Open Recording</source>
        <translation>Open Recording</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Quit</translation>
    </message>
    <message>
        <source>EN/中文</source>
        <translation>EN/中文</translation>
    </message>
    <message>
        <source>About us</source>
        <translation>About us</translation>
    </message>
    <message>
        <source>Toggle Start/End Point</source>
        <translation>Toggle Start/End Point</translation>
    </message>
    <message>
        <source>Save as...</source>
        <translation>Save as...</translation>
    </message>
    <message>
        <source>Cut Recording</source>
        <translation>Cut Recording</translation>
    </message>
    <message>
        <source>General Setting</source>
        <translation>General Setting</translation>
    </message>
</context>
</TS>
