<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en_US">
<context>
    <name>CameraTools</name>
    <message>
        <source>Contrast threshold of ON events. Higher: fewer ON events and less noise.</source>
        <translation>ON 事件的对比度阈值。调高后 ON 事件和噪声减少。</translation>
    </message>
    <message>
        <source>Contrast threshold of OFF events. Higher: fewer OFF events and less noise.</source>
        <translation>OFF 事件的对比度阈值。调高后 OFF 事件和噪声减少。</translation>
    </message>
    <message>
        <source>Records the edges of the signal at the trigger input.</source>
        <translation>记录触发输入信号的上升沿和下降沿。</translation>
    </message>
    <message>
        <source>Bandwidth of the pixels. Higher: faster response. Lower: less noise.</source>
        <translation>像素带宽。调高后响应更快，调低后噪声更少。</translation>
    </message>
    <message>
        <source>Suppresses slow changes and background activity. 0 is off.</source>
        <translation>抑制缓慢变化和背景活动，0 表示关闭。</translation>
    </message>
    <message>
        <source>Dead time of a pixel after an event. Higher: fewer events per edge.</source>
        <translation>像素产生事件后的不应期。调高后每条边缘的事件减少。</translation>
    </message>
    <message>
        <source>How long each picture gathers light. Longer: brighter.</source>
        <translation>每帧图像的曝光时间。时间越长，图像越亮。</translation>
    </message>
    <message>
        <source>Amplifies the picture. 6 dB act like twice the exposure.</source>
        <translation>放大图像信号。增益 6 dB 的效果相当于曝光时间加倍。</translation>
    </message>
    <message>
        <source>Value of pixels without light, added to every pixel.</source>
        <translation>无光照时的像素值，会叠加到每个像素上。</translation>
    </message>
    <message>
        <source>Turns the picture upside down. Events are not turned.</source>
        <translation>上下翻转图像，事件不随之翻转。</translation>
    </message>
    <message>
        <source>Delivers only the events of a window of the sensor.</source>
        <translation>仅输出传感器窗口内的事件。</translation>
    </message>
    <message>
        <source>Delivers the events outside the window instead.</source>
        <translation>反选：改为输出窗口外的事件。</translation>
    </message>
    <message>
        <source>First column of the window, which must lie on the sensor.</source>
        <translation>窗口起始列。窗口不得超出传感器范围。</translation>
    </message>
    <message>
        <source>First row of the window, which must lie on the sensor.</source>
        <translation>窗口起始行。窗口不得超出传感器范围。</translation>
    </message>
    <message>
        <source>Width of the window, which must lie on the sensor.</source>
        <translation>窗口宽度。窗口不得超出传感器范围。</translation>
    </message>
    <message>
        <source>Height of the window, which must lie on the sensor.</source>
        <translation>窗口高度。窗口不得超出传感器范围。</translation>
    </message>
    <message>
        <source>Thins out the bursts of equal events that edges cause at each pixel.</source>
        <translation>精简边缘经过时各像素连续触发的同极性事件，消除拖尾。</translation>
    </message>
    <message>
        <source>What is kept of a burst: its first event, all but the first, or only the second.</source>
        <translation>连续事件的保留方式：仅首个、去掉首个、仅第二个。</translation>
    </message>
    <message>
        <source>Longest time between two events of a burst.</source>
        <translation>同一串连续事件中相邻两个事件的最大间隔。</translation>
    </message>
    <message>
        <source>Removes the events of flickering lights and keeps motion.</source>
        <translation>滤除光源频闪产生的事件，保留运动产生的事件。</translation>
    </message>
    <message>
        <source>Band-stop removes what flickers in the band, band-pass all the rest.</source>
        <translation>Band-stop（带阻）滤除频带内的频闪；Band-pass（带通）仅保留频带内的频闪。</translation>
    </message>
    <message>
        <source>Lower end of the band. Lamps flicker at twice the mains frequency.</source>
        <translation>频带下限。灯光的频闪频率为市电频率的两倍。</translation>
    </message>
    <message>
        <source>Upper end of the band, not below its lower end.</source>
        <translation>频带上限，不得低于下限。</translation>
    </message>
    <message>
        <source>Holds the event rate at its limit by dropping events evenly.</source>
        <translation>事件率超限时均匀丢弃事件，使其保持在上限以内。</translation>
    </message>
    <message>
        <source>The most events delivered, in thousands per second.</source>
        <translation>输出事件率的上限，单位为千事件/秒。</translation>
    </message>
</context>
<context>
    <name>CamerasList</name>
    <message>
        <source>Open a camera</source>
        <translation>打开相机</translation>
    </message>
    <message>
        <source>Search Cameras...</source>
        <translation>搜索相机…</translation>
    </message>
    <message>
        <source>Camera List</source>
        <translation>相机列表</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
</context>
<context>
    <name>InitDialog</name>
    <message>
        <source>Version: %1</source>
        <translation>版本：%1</translation>
    </message>
    <message>
        <source>© 2024–2026 Korvane Imaging. All rights reserved.</source>
        <translation>© 2024–2026 Korvane Imaging 版权所有</translation>
    </message>
</context>
<context>
    <name>KvCutRawFile</name>
    <message>
        <source>Cut Recording</source>
        <translation>截取录像</translation>
    </message>
    <message>
        <source>Start Time</source>
        <translation>开始时间</translation>
    </message>
    <message>
        <source>End Time</source>
        <translation>结束时间</translation>
    </message>
    <message>
        <source>Save File Path</source>
        <translation>保存位置</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>选择文件夹</translation>
    </message>
    <message>
        <source>File Name</source>
        <translation>文件名</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Cut</source>
        <translation>截取</translation>
    </message>
</context>
<context>
    <name>KvExportVideoUI</name>
    <message>
        <source>Export a video</source>
        <translation>导出视频</translation>
    </message>
    <message>
        <source>Start Time</source>
        <translation>开始时间</translation>
    </message>
    <message>
        <source>End Time</source>
        <translation>结束时间</translation>
    </message>
    <message>
        <source>Save File Path</source>
        <translation>保存位置</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>选择文件夹</translation>
    </message>
    <message>
        <source>File Name</source>
        <translation>文件名</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Export</source>
        <translation>导出</translation>
    </message>
</context>
<context>
    <name>KvFilePathReminderForm</name>
    <message>
        <source>Success</source>
        <translation>成功</translation>
    </message>
    <message>
        <source>Open Dir</source>
        <translation>打开文件夹</translation>
    </message>
    <message>
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message>
        <source>Error</source>
        <translation>错误</translation>
    </message>
</context>
<context>
    <name>KvGeneralSetting</name>
    <message>
        <source>General Settings</source>
        <translation>通用设置</translation>
    </message>
    <message>
        <source>File</source>
        <translation>文件</translation>
    </message>
    <message>
        <source>File Settings</source>
        <translation>文件设置</translation>
    </message>
    <message>
        <source>Default Out Raw File Path</source>
        <translation>录像默认保存位置</translation>
    </message>
    <message>
        <source>Select Directory</source>
        <translation>选择文件夹</translation>
    </message>
    <message>
        <source>Default Video File Path</source>
        <translation>视频默认保存位置</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
    <message>
        <source>Save</source>
        <translation>保存</translation>
    </message>
</context>
<context>
    <name>LanguageSwitch</name>
    <message>
        <source>The language change will take effect after restart.</source>
        <translation>语言更改将在重启后生效。</translation>
    </message>
    <message>
        <source>Tips</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Restart</source>
        <translation>立即重启</translation>
    </message>
    <message>
        <source>Later</source>
        <translation>稍后</translation>
    </message>
</context>
<context>
    <name>LiveSession</name>
    <message>
        <source>Open camera: </source>
        <translation>打开相机 </translation>
    </message>
    <message>
        <source>failed.</source>
        <translation> 失败。</translation>
    </message>
    <message>
        <source>Save file success!</source>
        <translation>文件保存成功！</translation>
    </message>
    <message>
        <source>Recording stopped: </source>
        <translation>录制已中断：</translation>
    </message>
    <message>
        <source>the file has no name</source>
        <translation>文件没有名称</translation>
    </message>
    <message>
        <source>the folder cannot be made</source>
        <translation>无法创建文件夹</translation>
    </message>
    <message>
        <source>the file has been removed</source>
        <translation>文件已被删除</translation>
    </message>
    <message>
        <source>the file has been truncated</source>
        <translation>文件已被截断</translation>
    </message>
    <message>
        <source>there is not enough memory</source>
        <translation>内存不足</translation>
    </message>
    <message>
        <source>No space left on device</source>
        <translation>磁盘空间不足</translation>
    </message>
    <message>
        <source>Permission denied</source>
        <translation>没有写入权限</translation>
    </message>
    <message>
        <source>this machine&apos;s FFmpeg has no encoder for H.264 or MPEG-4</source>
        <translation>本机的 FFmpeg 没有 H.264 或 MPEG-4 编码器</translation>
    </message>
    <message>
        <source>Frames are not recorded: </source>
        <translation>图像帧未录制：</translation>
    </message>
    <message>
        <source>the camera&apos;s clock has leapt by more than thirty days</source>
        <translation>相机时间戳跳变超过三十天</translation>
    </message>
    <message>
        <source>no frame could be recorded for five minutes</source>
        <translation>已有五分钟未能录制任何图像帧</translation>
    </message>
</context>
<context>
    <name>MainWidget</name>
    <message>
        <source>Camera not found: </source>
        <translation>未找到相机：</translation>
    </message>
    <message>
        <source>Play/Stop</source>
        <translation>播放/暂停</translation>
    </message>
    <message>
        <source>Start/Stop recording</source>
        <translation>开始/停止录制</translation>
    </message>
    <message>
        <source>Previous frame</source>
        <translation>上一帧</translation>
    </message>
    <message>
        <source>Next frame</source>
        <translation>下一帧</translation>
    </message>
    <message>
        <source>Reset the playback progress to the beginning</source>
        <translation>回到起始位置</translation>
    </message>
    <message>
        <source>Select to automatically replay at the end of the playback</source>
        <translation>循环播放：播放结束后自动重播</translation>
    </message>
</context>
<context>
    <name>MenuActions</name>
    <message>
        <source>Is it open in the browser?</source>
        <translation>是否在浏览器中打开官方网站？</translation>
    </message>
    <message>
        <source>Tips</source>
        <translation>提示</translation>
    </message>
    <message>
        <source>Open</source>
        <translation>打开</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
</context>
<context>
    <name>RangeDialog</name>
    <message>
        <source>Select Directory</source>
        <translation>选择文件夹</translation>
    </message>
</context>
<context>
    <name>RangeSaver</name>
    <message>
        <source>Please open a raw file first.</source>
        <translation>请先打开录像。</translation>
    </message>
    <message>
        <source>Export video success!</source>
        <translation>视频导出成功！</translation>
    </message>
    <message>
        <source>Export raw file success!</source>
        <translation>录像截取成功！</translation>
    </message>
</context>
<context>
    <name>RecordingOpener</name>
    <message>
        <source>Select a raw file</source>
        <translation>选择录像文件</translation>
    </message>
    <message>
        <source>RAW files (*.raw)</source>
        <translation>RAW 文件 (*.raw)</translation>
    </message>
    <message>
        <source>Load fusion file failed: </source>
        <translation>融合录像加载失败：</translation>
    </message>
</context>
<context>
    <name>SettingDisplayItem</name>
    <message>
        <source>Accumulation time</source>
        <translation>累积时间</translation>
    </message>
    <message>
        <source>Slow Rate</source>
        <translation>慢放倍率</translation>
    </message>
</context>
<context>
    <name>SidebarApsSettingUI</name>
    <message>
        <source>APS Setting</source>
        <translation>APS 设置</translation>
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
        <translation>相机设置</translation>
    </message>
    <message>
        <source>Display</source>
        <translation>显示</translation>
    </message>
</context>
<context>
    <name>SidebarDvsSettingUI</name>
    <message>
        <source>DVS Setting</source>
        <translation>DVS 设置</translation>
    </message>
    <message>
        <source>Biases</source>
        <translation>偏置</translation>
    </message>
    <message>
        <source>Trigger In</source>
        <translation>触发输入</translation>
    </message>
    <message>
        <source>Anti Flicker</source>
        <translation>抗频闪</translation>
    </message>
    <message>
        <source>Event Rate Control</source>
        <translation>事件速率控制</translation>
    </message>
    <message>
        <source>Event Trail Filter</source>
        <translation>事件拖尾滤波</translation>
    </message>
    <message>
        <source>ROI</source>
        <translation>感兴趣区域</translation>
    </message>
</context>
<context>
    <name>Widget</name>
    <message>
        <source>Widget</source>
        <translation>KorvaneInsight</translation>
    </message>
    <message>
        <source>File</source>
        <translation>文件</translation>
    </message>
    <message>
        <source>Device</source>
        <translation>设备</translation>
    </message>
    <message>
        <source>Setting</source>
        <translation>设置</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>帮助</translation>
    </message>
    <message>
        <source>Camera: </source>
        <translation>相机：</translation>
    </message>
    <message>
        <source> | Time: </source>
        <translation> | 时间：</translation>
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
        <translation>打开相机</translation>
    </message>
    <message>
        <source>Open Recording</source>
        <translation>打开录像</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>退出</translation>
    </message>
    <message>
        <source>EN/中文</source>
        <translation>EN/中文</translation>
    </message>
    <message>
        <source>About us</source>
        <translation>关于我们</translation>
    </message>
    <message>
        <source>Toggle Start/End Point</source>
        <translation>显示起止点</translation>
    </message>
    <message>
        <source>Save as...</source>
        <translation>另存为…</translation>
    </message>
    <message>
        <source>Cut Recording</source>
        <translation>截取录像</translation>
    </message>
    <message>
        <source>General Setting</source>
        <translation>通用设置</translation>
    </message>
</context>
</TS>
