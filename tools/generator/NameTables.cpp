#include "NameTables.h"

namespace NameTables {

namespace {

const Han kSurnames[] = {
    { u"王", "wang" },
    { u"李", "li" },
    { u"张", "zhang" },
    { u"刘", "liu" },
    { u"陈", "chen" },
    { u"杨", "yang" },
    { u"黄", "huang" },
    { u"赵", "zhao" },
    { u"吴", "wu" },
    { u"周", "zhou" },
    { u"徐", "xu" },
    { u"孙", "sun" },
    { u"马", "ma" },
    { u"朱", "zhu" },
    { u"胡", "hu" },
    { u"郭", "guo" },
    { u"何", "he" },
    { u"高", "gao" },
    { u"林", "lin" },
    { u"罗", "luo" },
    { u"郑", "zheng" },
    { u"梁", "liang" },
    { u"谢", "xie" },
    { u"宋", "song" },
    { u"唐", "tang" },
    { u"许", "xu" },
    { u"韩", "han" },
    { u"冯", "feng" },
    { u"邓", "deng" },
    { u"曹", "cao" },
    { u"彭", "peng" },
    { u"曾", "zeng" },
    { u"肖", "xiao" },
    { u"田", "tian" },
    { u"董", "dong" },
    { u"袁", "yuan" },
    { u"潘", "pan" },
    { u"于", "yu" },
    { u"蒋", "jiang" },
    { u"蔡", "cai" },
    { u"余", "yu" },
    { u"杜", "du" },
    { u"叶", "ye" },
    { u"程", "cheng" },
    { u"苏", "su" },
    { u"魏", "wei" },
    { u"吕", "lv" },
    { u"丁", "ding" },
    { u"任", "ren" },
    { u"沈", "shen" },
    { u"姚", "yao" },
    { u"卢", "lu" },
    { u"姜", "jiang" },
    { u"崔", "cui" },
    { u"钟", "zhong" },
    { u"谭", "tan" },
    { u"陆", "lu" },
    { u"汪", "wang" },
    { u"范", "fan" },
    { u"金", "jin" },
    { u"石", "shi" },
    { u"廖", "liao" },
    { u"贾", "jia" },
    { u"夏", "xia" },
    { u"韦", "wei" },
    { u"付", "fu" },
    { u"方", "fang" },
    { u"白", "bai" },
    { u"邹", "zou" },
    { u"孟", "meng" },
    { u"熊", "xiong" },
    { u"秦", "qin" },
    { u"邱", "qiu" },
    { u"江", "jiang" },
    { u"尹", "yin" },
    { u"薛", "xue" },
    { u"闫", "yan" },
    { u"段", "duan" },
    { u"雷", "lei" },
    { u"侯", "hou" },
    { u"龙", "long" },
    { u"史", "shi" },
    { u"陶", "tao" },
    { u"黎", "li" },
    { u"贺", "he" },
    { u"顾", "gu" },
    { u"毛", "mao" },
    { u"郝", "hao" },
    { u"龚", "gong" },
    { u"邵", "shao" },
    { u"万", "wan" },
    { u"钱", "qian" },
    { u"严", "yan" },
    { u"武", "wu" },
    { u"戴", "dai" },
    { u"莫", "mo" },
    { u"孔", "kong" },
    { u"向", "xiang" },
    { u"汤", "tang" },
    { u"常", "chang" },
};

const Han kCompoundSurnames[] = {
    { u"欧阳", "ouyang" },
    { u"司马", "sima" },
    { u"上官", "shangguan" },
    { u"诸葛", "zhuge" },
    { u"东方", "dongfang" },
    { u"慕容", "murong" },
    { u"令狐", "linghu" },
    { u"皇甫", "huangfu" },
};

const Han kMaleGiven[] = {
    { u"伟", "wei" },
    { u"强", "qiang" },
    { u"磊", "lei" },
    { u"军", "jun" },
    { u"洋", "yang" },
    { u"勇", "yong" },
    { u"杰", "jie" },
    { u"涛", "tao" },
    { u"明", "ming" },
    { u"超", "chao" },
    { u"刚", "gang" },
    { u"平", "ping" },
    { u"辉", "hui" },
    { u"建", "jian" },
    { u"国", "guo" },
    { u"宇", "yu" },
    { u"浩", "hao" },
    { u"鹏", "peng" },
    { u"飞", "fei" },
    { u"波", "bo" },
    { u"斌", "bin" },
    { u"俊", "jun" },
    { u"峰", "feng" },
    { u"凯", "kai" },
    { u"志", "zhi" },
    { u"海", "hai" },
    { u"亮", "liang" },
    { u"东", "dong" },
    { u"轩", "xuan" },
    { u"睿", "rui" },
    { u"博", "bo" },
    { u"泽", "ze" },
    { u"航", "hang" },
    { u"文", "wen" },
    { u"斌", "bin" },
    { u"成", "cheng" },
    { u"龙", "long" },
    { u"晨", "chen" },
    { u"林", "lin" },
    { u"华", "hua" },
    { u"鑫", "xin" },
    { u"坤", "kun" },
    { u"毅", "yi" },
    { u"彬", "bin" },
    { u"振", "zhen" },
};

const Han kFemaleGiven[] = {
    { u"芳", "fang" },
    { u"娜", "na" },
    { u"敏", "min" },
    { u"静", "jing" },
    { u"丽", "li" },
    { u"艳", "yan" },
    { u"娟", "juan" },
    { u"秀", "xiu" },
    { u"霞", "xia" },
    { u"英", "ying" },
    { u"玉", "yu" },
    { u"婷", "ting" },
    { u"雪", "xue" },
    { u"琳", "lin" },
    { u"宁", "ning" },
    { u"欣", "xin" },
    { u"怡", "yi" },
    { u"佳", "jia" },
    { u"颖", "ying" },
    { u"倩", "qian" },
    { u"晓", "xiao" },
    { u"红", "hong" },
    { u"丹", "dan" },
    { u"慧", "hui" },
    { u"梅", "mei" },
    { u"春", "chun" },
    { u"涵", "han" },
    { u"然", "ran" },
    { u"思", "si" },
    { u"雨", "yu" },
    { u"嘉", "jia" },
    { u"诗", "shi" },
    { u"梓", "zi" },
    { u"萱", "xuan" },
    { u"璐", "lu" },
    { u"莉", "li" },
    { u"燕", "yan" },
    { u"洁", "jie" },
    { u"琪", "qi" },
    { u"月", "yue" },
    { u"兰", "lan" },
    { u"薇", "wei" },
    { u"瑶", "yao" },
    { u"蕾", "lei" },
    { u"岚", "lan" },
};

const char *const kLatinMale[] = {
    "James",
    "John",
    "Robert",
    "Michael",
    "David",
    "William",
    "Thomas",
    "Daniel",
    "Paul",
    "Mark",
    "Peter",
    "Kevin",
    "Brian",
    "Eric",
    "Jason",
    "Ryan",
    "Lukas",
    "Jonas",
    "Pierre",
    "Marco",
    "Hans",
    "Ivan",
    "Oliver",
    "Samuel",
    "Martin",
    "Felix",
    "Leon",
    "Adam",
    "Victor",
    "Tom",
};

const char *const kLatinFemale[] = {
    "Mary",
    "Linda",
    "Susan",
    "Karen",
    "Nancy",
    "Lisa",
    "Sarah",
    "Emma",
    "Anna",
    "Laura",
    "Julia",
    "Sophie",
    "Claire",
    "Marie",
    "Elena",
    "Nina",
    "Alice",
    "Grace",
    "Helen",
    "Irene",
    "Chloe",
    "Lena",
    "Sofia",
    "Eva",
    "Olivia",
    "Amy",
    "Kate",
    "Jane",
    "Ruth",
    "Paula",
};

const char *const kLatinLast[] = {
    "Smith",
    "Johnson",
    "Brown",
    "Miller",
    "Davis",
    "Wilson",
    "Moore",
    "Taylor",
    "Clark",
    "Lewis",
    "Walker",
    "Young",
    "King",
    "Wright",
    "Scott",
    "Green",
    "Baker",
    "Adams",
    "Nelson",
    "Hill",
    "Mueller",
    "Schmidt",
    "Weber",
    "Fischer",
    "Martin",
    "Bernard",
    "Dubois",
    "Rossi",
    "Russo",
    "Bianchi",
    "Garcia",
    "Lopez",
    "Novak",
    "Kowalski",
    "Jansen",
    "Berg",
    "Larsen",
    "Ivanov",
    "Tanaka",
    "Kim",
    "Park",
    "Nguyen",
    "Tran",
    "Silva",
    "Costa",
    "Evans",
    "Hughes",
    "Ward",
};

const char16_t *const kRegular1[] = {
    u"总经理办公室",
    u"研发中心",
    u"市场营销中心",
    u"销售中心",
    u"运营中心",
    u"财务中心",
    u"人力资源中心",
    u"行政中心",
    u"客户服务中心",
    u"生产制造中心",
    u"供应链中心",
    u"信息技术中心",
    u"质量管理中心",
    u"法务合规部",
    u"战略发展部",
    u"Velmar Labs",
    u"International Business",
};

const char16_t *const kRegular2[] = {
    u"软件开发部",
    u"测试部",
    u"产品部",
    u"设计部",
    u"架构部",
    u"运维部",
    u"数据部",
    u"华北区",
    u"华东区",
    u"华南区",
    u"西南区",
    u"东北区",
    u"海外市场部",
    u"品牌部",
    u"渠道部",
    u"招聘部",
    u"培训部",
    u"薪酬福利部",
    u"会计部",
    u"审计部",
    u"采购部",
    u"仓储物流部",
    u"安全部",
    u"Research",
    u"Support",
};

const char16_t *const kRegular3[] = {
    u"第一组",
    u"第二组",
    u"第三组",
    u"平台组",
    u"前端组",
    u"后端组",
    u"移动组",
    u"算法组",
    u"自动化组",
    u"北京分部",
    u"上海分部",
    u"广州分部",
    u"深圳分部",
    u"成都分部",
    u"武汉分部",
    u"项目组",
    u"Team Alpha",
    u"Team Beta",
    u"值班组",
    u"专家组",
    u"预研组",
    u"集成组",
};

const char16_t *const kGuest1[] = {
    u"合作伙伴",
    u"重点客户",
    u"供应商",
    u"代理商",
    u"外部顾问",
    u"访客",
    u"校友会",
    u"用户论坛",
    u"Partners",
    u"Community",
};

const char16_t *const kGuest2[] = {
    u"华北客户",
    u"华东客户",
    u"华南客户",
    u"海外客户",
    u"硬件供应商",
    u"软件供应商",
    u"物流供应商",
    u"一级代理",
    u"二级代理",
    u"技术顾问",
    u"VIP 访客",
    u"Beta 用户",
    u"开发者社区",
    u"行业协会",
};

const char16_t *const kGuest3[] = {
    u"北京",
    u"上海",
    u"广州",
    u"深圳",
    u"杭州",
    u"南京",
    u"成都",
    u"重庆",
    u"武汉",
    u"西安",
    u"天津",
    u"苏州",
    u"Group A",
    u"Group B",
    u"Asia Pacific",
    u"Europe",
};

const char16_t *const kRanks[] = {
    u"职员",
    u"组长",
    u"主管",
    u"经理",
    u"副经理",
    u"总监",
    u"副总监",
    u"总经理",
    u"副总经理",
    u"董事长",
    u"工程师",
    u"高级工程师",
    u"资深工程师",
    u"架构师",
    u"实习生",
    u"顾问",
    u"专员",
    u"助理",
    u"秘书",
    u"会计",
    u"出纳",
    u"销售代表",
    u"客户经理",
    u"项目经理",
    u"产品经理",
    u"设计师",
    u"测试工程师",
    u"运维工程师",
    u"技术支持",
    u"Team Lead",
    u"Senior Engineer",
};

const char16_t *const kCities[] = {
    u"北京市海淀区",
    u"北京市朝阳区",
    u"上海市浦东新区",
    u"上海市徐汇区",
    u"广州市天河区",
    u"深圳市南山区",
    u"深圳市福田区",
    u"杭州市西湖区",
    u"南京市鼓楼区",
    u"成都市武侯区",
    u"武汉市洪山区",
    u"西安市雁塔区",
    u"天津市和平区",
    u"苏州市工业园区",
    u"重庆市渝北区",
};

const char16_t *const kStreets[] = {
    u"中关村大街",
    u"建国路",
    u"世纪大道",
    u"漕溪北路",
    u"天河路",
    u"科技园南路",
    u"深南大道",
    u"文三路",
    u"中山路",
    u"人民南路",
    u"珞喻路",
    u"高新路",
    u"南京路",
    u"星湖街",
    u"金开大道",
};

const char16_t *const kDescriptions[] = {
    u"负责公司内部通讯系统的维护。",
    u"热爱技术, 喜欢跑步和摄影。",
    u"有问题请随时联系我。",
    u"擅长: C++; Java; Python",
    u"十年销售经验, 主要负责华东区客户。",
    u"新员工, 请多关照!",
    u"Working on the messenger backend.",
    u"周一至周五 9:00-18:00 在线",
    u"出差中, 请发邮件。",
    u"负责财务报销审核; 每周三集中处理。",
    u"Available for code reviews.",
    u"质量第一, 客户至上",
    u"喜欢读书、旅行和音乐",
};

const char16_t *const kNicknames[] = {
    u"小王",
    u"阿强",
    u"大伟",
    u"老张",
    u"小雪",
    u"琳琳",
    u"Dave",
    u"Sunny",
    u"Coco",
    u"Tony",
    u"胖虎",
    u"风之子",
    u"Rock'n'Roll",
    u"dev;ops",
    u"C:\\Temp",
    u"It's me",
    u"A;B;C",
    u"路人甲",
    u"Mr.Li",
    u"\\o/",
};

const char *const kMailDomains[] = {
    "velmar.com.cn",
    "velmar.com.cn",
    "velmar.com.cn",
    "corp.example.cn",
    "example.com",
};

const char *const kGuestMailDomains[] = {
    "qq.com",
    "163.com",
    "126.com",
    "sina.com",
    "gmail.com",
    "outlook.com",
    "partner.example.com",
};

const char16_t *const kNoticeTitles[] = {
    u"关于%1的通知",
    u"%1安排",
    u"【重要】%1",
    u"%1会议纪要",
    u"%1公告",
    u"请大家注意: %1",
    u"It's time: %1",
    u"%1 (更新)",
    u"Reminder: %1",
};

const char16_t *const kNoticeTopics[] = {
    u"国庆节放假",
    u"春节放假",
    u"系统升级维护",
    u"年度体检",
    u"办公室搬迁",
    u"季度总结",
    u"新员工入职培训",
    u"消防演习",
    u"网络中断",
    u"报销流程调整",
    u"年会",
    u"信息安全检查",
    u"VPN 账号更新",
    u"客户来访接待",
    u"项目启动",
    u"server maintenance",
    u"新版客户端发布",
};

const char16_t *const kNoticeSentences[] = {
    u"各位同事:",
    u"请大家提前做好准备, 如有疑问请联系行政部。",
    u"届时服务器将暂停服务约两小时; 请提前保存好工作内容。",
    u"具体时间安排请见附件。",
    u"请各部门负责人通知到每一位员工。",
    u"感谢大家的配合!",
    u"地点: 三楼大会议室; 时间: 下午两点。",
    u"新版本的客户端可以在 VelmarBox 的 \\软件下载\\客户端 目录中找到。",
    u"It's important that everyone attends.",
    u"报名截止日期为本周五。",
    u"如需请假, 请在 OA 系统中提交申请。",
    u"详细说明见公司内网。",
};

const char16_t *const kFileNames[] = {
    u"会议纪要.doc",
    u"放假安排.xls",
    u"项目计划.docx",
    u"报价单.xlsx",
    u"VelmarSetup.exe",
    u"培训资料.pdf",
    u"组织结构图.png",
    u"设计稿\\首页.psd",
    u"设计稿\\登录页.psd",
    u"readme.txt",
    u"合同范本.doc",
    u"季度报告.ppt",
    u"photos\\team.jpg",
};

const char16_t *const kFolderRoots[] = {
    u"公共文档",
    u"部门共享",
    u"项目资料",
    u"软件下载",
    u"培训资料",
    u"规章制度",
    u"市场资料",
    u"Templates",
    u"Archive",
};

const char16_t *const kFolderNames[] = {
    u"2022",
    u"2023",
    u"2024",
    u"研发中心",
    u"市场部",
    u"合同",
    u"报价",
    u"设计稿",
    u"会议纪要",
    u"Release",
    u"Drivers",
    u"Manuals",
    u"图片",
    u"视频",
    u"归档",
    u"新员工培训",
    u"季度报告",
    u"客户端",
    u"财务",
    u"人事",
    u"产品文档",
    u"测试报告",
    u"source",
    u"backup",
};

const char16_t *const kChatLines[] = {
    u"大家好, 今天下午的会议改到三点。",
    u"收到, 谢谢!",
    u"文档已经上传到 VelmarBox 了。",
    u"这个问题我来跟进一下。",
    u"好的, 没问题。",
    u"Can you send me the latest build?",
    u"客户那边反馈说登录很慢。",
    u"我这边测试通过了。",
    u"晚上一起吃饭吗?",
    u"服务器重启之后就正常了。",
    u"OK, thanks!",
    u"明天上午十点在三楼会议室见。",
    u"请把报价单发我一份。",
    u"已经提交审批了, 等领导签字。",
};

const char16_t *const kSystemEvents[] = {
    u"service started",
    u"service stopped",
    u"listening on port %1",
    u"database connected",
    u"organisation version changed, reloading directory",
    u"client connected from 10.0.0.%1",
    u"client disconnected: timeout",
    u"relay session %1 opened",
    u"relay session %1 closed",
    u"file dispatch queue length %1",
    u"file session %1 finished",
    u"chat room %1 created",
    u"用户登录失败: 密码错误",
    u"连接数据库成功",
    u"接收到组织结构变更通知",
};

} // namespace

std::span<const Han> surnames()
{
    return kSurnames;
}
std::span<const Han> compoundSurnames()
{
    return kCompoundSurnames;
}
std::span<const Han> maleGivenNames()
{
    return kMaleGiven;
}
std::span<const Han> femaleGivenNames()
{
    return kFemaleGiven;
}
std::span<const char *const> latinMaleFirstNames()
{
    return kLatinMale;
}
std::span<const char *const> latinFemaleFirstNames()
{
    return kLatinFemale;
}
std::span<const char *const> latinLastNames()
{
    return kLatinLast;
}

std::span<const char16_t *const> regularGroupNames(int depth)
{
    if (depth <= 1)
        return kRegular1;
    if (depth == 2)
        return kRegular2;
    return kRegular3;
}

std::span<const char16_t *const> guestGroupNames(int depth)
{
    if (depth <= 1)
        return kGuest1;
    if (depth == 2)
        return kGuest2;
    return kGuest3;
}

std::span<const char16_t *const> rankNames()
{
    return kRanks;
}
std::span<const char16_t *const> cities()
{
    return kCities;
}
std::span<const char16_t *const> streets()
{
    return kStreets;
}
std::span<const char16_t *const> descriptions()
{
    return kDescriptions;
}
std::span<const char16_t *const> nicknames()
{
    return kNicknames;
}
std::span<const char *const> mailDomains()
{
    return kMailDomains;
}
std::span<const char *const> guestMailDomains()
{
    return kGuestMailDomains;
}
std::span<const char16_t *const> noticeTitles()
{
    return kNoticeTitles;
}
std::span<const char16_t *const> noticeTopics()
{
    return kNoticeTopics;
}
std::span<const char16_t *const> noticeSentences()
{
    return kNoticeSentences;
}
std::span<const char16_t *const> fileNames()
{
    return kFileNames;
}
std::span<const char16_t *const> folderRoots()
{
    return kFolderRoots;
}
std::span<const char16_t *const> folderNames()
{
    return kFolderNames;
}
std::span<const char16_t *const> chatLines()
{
    return kChatLines;
}
std::span<const char16_t *const> systemEvents()
{
    return kSystemEvents;
}

} // namespace NameTables
