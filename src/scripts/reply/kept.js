// What a quote is made of. Of other elements only what they hold is kept, and of some not even that.

const setOf = (words) => new Set(words.split(/\s+/));
const TABLE_PARTS = setOf('table caption colgroup thead tbody tfoot tr');
const KEPT_TAGS = setOf(
    `a abbr acronym address article aside b bdi bdo big blockquote br center cite code col dd del dfn dir
           div dl dt em figcaption figure font footer h1 h2 h3 h4 h5 h6 header hr i img ins kbd li main mark nav
           nobr ol p pre q rp rt ruby s samp section small span strike strong sub sup td th time tt u ul var wbr
           ${[...TABLE_PARTS].join(' ')}`);
const DROPPED_TAGS =
    setOf(`script style template noscript title head iframe frame frameset noframes noembed select datalist
           annotation annotation-xml desc metadata defs`);
const KEPT_ATTRIBUTES = setOf(
    `style dir lang title alt hidden align valign width height size border color face bgcolor bordercolor
           cellpadding cellspacing colspan rowspan span nowrap noshade clear compact start reversed type value
           scope headers abbr summary rules frame hspace vspace datetime`);
const LINK_SCHEMES = setOf('http: https: mailto: tel: sms: ftp: webcal:');
const IMAGE_SCHEMES = setOf('http: https: blob: cid:');

const isAllowedAddress = (attribute, value) => {
  try {
    const {protocol, pathname} = new URL(value, document.baseURI);
    return attribute === 'href' ?
        LINK_SCHEMES.has(protocol) :
        IMAGE_SCHEMES.has(protocol) || (protocol === 'data:' && /^image\//i.test(pathname));
  } catch {
    return false;
  }
};

const isAllowedAttribute = ({name, value}) => KEPT_ATTRIBUTES.has(name) ||
    (['href', 'src', 'background'].includes(name) && isAllowedAddress(name, value));

const isDropped = (element) =>
    DROPPED_TAGS.has(tagOf(element)) || (tagOf(element) === 'div' && element.hasAttribute(ORPHAN_ATTR));

const isKept = (element) => namespaceOf(element) === document.documentElement.namespaceURI &&
    KEPT_TAGS.has(tagOf(element)) && !(tagOf(element) === 'mark' && element.matches(MARK_SELECTOR));
