<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN">
<context>
    <name>CodeForm</name>
    <message>
        <source>Sen&amp;d code</source>
        <translation>发送验证码(&amp;D)</translation>
    </message>
    <message>
        <source>Again in %1 s</source>
        <translation>%1 秒后重发</translation>
    </message>
    <message>
        <source>C&amp;haracters:</source>
        <translation>图中字符(&amp;H)：</translation>
    </message>
    <message>
        <source>C&amp;ode:</source>
        <translation>验证码(&amp;O)：</translation>
    </message>
    <message>
        <source>Picture with characters</source>
        <translation>字符图片</translation>
    </message>
    <message>
        <source>Another picture</source>
        <translation>换一张图片</translation>
    </message>
    <message>
        <source>Pict&amp;ure, press it for another:</source>
        <translation>图片，点击可更换(&amp;U)：</translation>
    </message>
    <message>
        <source>Try again</source>
        <translation>重试</translation>
    </message>
</context>
<context>
    <name>CountryBox</name>
    <message>
        <source>None</source>
        <translation>无</translation>
    </message>
    <message>
        <source>%1 (+%2)</source>
        <translation>%1 (+%2)</translation>
    </message>
</context>
<context>
    <name>PasswordField</name>
    <message>
        <source>Pass&amp;word:</source>
        <translation>密码(&amp;W)：</translation>
    </message>
    <message>
        <source>S&amp;how</source>
        <translation>显示(&amp;H)</translation>
    </message>
    <message>
        <source>Show the password</source>
        <translation>显示密码</translation>
    </message>
</context>
<context>
    <name>ProfilePage</name>
    <message>
        <source>&amp;Refresh</source>
        <translation>刷新(&amp;R)</translation>
    </message>
    <message>
        <source>Sign &amp;out</source>
        <translation>退出登录(&amp;O)</translation>
    </message>
    <message>
        <source>Welcome</source>
        <translation>欢迎</translation>
    </message>
    <message>
        <source>Welcome, %1</source>
        <translation>%1，欢迎您</translation>
    </message>
    <message>
        <source>E-mail:</source>
        <translation>邮箱：</translation>
    </message>
    <message>
        <source>Phone:</source>
        <translation>电话：</translation>
    </message>
    <message>
        <source>Company:</source>
        <translation>公司：</translation>
    </message>
    <message>
        <source>Last sign-in:</source>
        <translation>上次登录：</translation>
    </message>
</context>
<context>
    <name>SignInPage</name>
    <message>
        <source>&amp;Account:</source>
        <translation>账号(&amp;A)：</translation>
    </message>
    <message>
        <source>Re&amp;member me on this computer</source>
        <translation>在此电脑上记住我(&amp;M)</translation>
    </message>
    <message>
        <source>&amp;Sign in</source>
        <translation>登录(&amp;S)</translation>
    </message>
    <message>
        <source>User name, e-mail or phone number</source>
        <translation>用户名、邮箱或手机号</translation>
    </message>
    <message>
        <source>By &amp;password</source>
        <translation>密码登录(&amp;P)</translation>
    </message>
    <message>
        <source>By &amp;verification code</source>
        <translation>验证码登录(&amp;V)</translation>
    </message>
    <message>
        <source>Sign in</source>
        <translation>登录</translation>
    </message>
    <message>
        <source>&amp;Calling code, for a phone number:</source>
        <translation>国家/地区代码，用于手机号(&amp;C)：</translation>
    </message>
    <message>
        <source>The code is on its way to you.</source>
        <translation>验证码已发送。</translation>
    </message>
    <message>
        <source>Please type your user name, e-mail or phone number.</source>
        <translation>请输入用户名、邮箱或手机号。</translation>
    </message>
    <message>
        <source>Please type your password.</source>
        <translation>请输入密码。</translation>
    </message>
    <message>
        <source>Please type the code.</source>
        <translation>请输入验证码。</translation>
    </message>
    <message>
        <source>Your account is filled in: you can sign in now.</source>
        <translation>账号已填好，现在可以登录。</translation>
    </message>
</context>
<context>
    <name>SignInWindow</name>
    <message>
        <source>Close</source>
        <translation>关闭</translation>
    </message>
    <message>
        <source>Account</source>
        <translation>账号</translation>
    </message>
    <message>
        <source>Waiting for the account service</source>
        <translation>正在等待账号服务</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>WebLinks</name>
    <message>
        <source>Create accou&amp;nt</source>
        <translation>注册账号(&amp;N)</translation>
    </message>
    <message>
        <source>&amp;Forgotten password?</source>
        <translation>忘记密码？(&amp;F)</translation>
    </message>
    <message>
        <source>The pages for this are not installed.</source>
        <translation>未安装所需的页面。</translation>
    </message>
</context>
<context>
    <name>Words</name>
    <message>
        <source>en_US</source>
        <extracomment>The locale of this translation: language, underscore, country</extracomment>
        <translation>zh_CN</translation>
    </message>
    <message>
        <source>That did not work.</source>
        <translation>操作失败。</translation>
    </message>
</context>
</TS>
